#include "platform/Log.h"

#include "tests/support/CapturedLog.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <future>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quorvane::platform {

namespace {

using Lines = std::vector<std::string>;

// Blocks writing until it is released.
class HeldSink : public LogSink {
public:
    struct Gate {
        std::promise<void> entered;
        std::promise<void> letGo;
        Lines lines;
    };
    explicit HeldSink(Gate& gate)
        : m_gate(gate)
        , m_letGo(gate.letGo.get_future())
    {
    }
    void writeLine(const std::string& line) override
    {
        if (m_gate.lines.empty()) {
            m_gate.entered.set_value();
            m_letGo.wait();
        }
        m_gate.lines.push_back(line.substr(0, 60));
    }

private:
    Gate& m_gate;
    std::future<void> m_letGo;
};

std::unique_ptr<Log> logInto(std::unique_ptr<LogSink> sink)
{
    std::vector<std::unique_ptr<LogSink>> sinks;
    sinks.push_back(std::move(sink));
    return std::make_unique<Log>(std::move(sinks));
}

} // namespace

TEST(Log, WritesLinesInTheOrderOfTheCalls)
{
    test::CapturedLog log;
    Lines expected;
    for (int number = 0; number < 1000; ++number) {
        expected.push_back("line " + std::to_string(number));
        log.log().write(expected.back());
    }

    EXPECT_EQ(log.lines(), expected);
}

TEST(Log, KeepsTheOrderOfEachThread)
{
    test::CapturedLog log;
    constexpr int linesOfEach = 500;
    const auto writeSome = [&log](char name) {
        for (int number = 0; number < linesOfEach; ++number)
            log.log().write(std::string(1, name) + std::to_string(number));
    };

    std::thread first(writeSome, 'a');
    std::thread second(writeSome, 'b');
    first.join();
    second.join();

    std::map<char, int> next;
    for (const std::string& line : log.lines())
        EXPECT_EQ(line.substr(1), std::to_string(next[line.front()]++)) << line;
    EXPECT_EQ(next['a'], linesOfEach);
    EXPECT_EQ(next['b'], linesOfEach);
}

TEST(Log, EndingWritesWhatIsQueued)
{
    HeldSink::Gate gate;
    auto log = logInto(std::make_unique<HeldSink>(gate));
    log->write("first");
    gate.entered.get_future().wait();
    log->write("second");
    log->write("third");

    gate.letGo.set_value();
    log.reset();

    EXPECT_EQ(gate.lines, (Lines{"first", "second", "third"}));
}

TEST(Log, WritingDoesNotWaitForASlowReader)
{
    HeldSink::Gate gate;
    auto log = logInto(std::make_unique<HeldSink>(gate));
    log->write("first");
    gate.entered.get_future().wait();

    for (int number = 0; number < 10000; ++number)
        log->write("queued");

    EXPECT_TRUE(gate.lines.empty());
    gate.letGo.set_value();
    log->flush();
    EXPECT_EQ(gate.lines.size(), 10001U);
}

TEST(Log, LinesBeyondTheQueueAreCountedInTheirPlace)
{
    HeldSink::Gate gate;
    auto log = logInto(std::make_unique<HeldSink>(gate));
    log->write("first");
    gate.entered.get_future().wait();

    const std::string mebibyte(1U << 20U, 'x');
    for (int number = 0; number < 67; ++number)
        log->write(mebibyte);
    gate.letGo.set_value();
    log->flush();
    log->write("last");
    log->flush();

    ASSERT_EQ(gate.lines.size(), 1U + 64U + 1U + 1U);
    EXPECT_EQ(gate.lines[65], "the log could not keep up: 3 lines are missing here");
    EXPECT_EQ(gate.lines[66], "last");
}

TEST(Log, WritesAtOnceAndSaysSoWhereNoThreadCanBeHad)
{
    const std::string lines = test::answerOfChild([] {
        if (!test::forbidThreads())
            return std::string("not prepared");
        HeldSink::Gate gate;
        gate.letGo.set_value();
        const auto log = logInto(std::make_unique<HeldSink>(gate));
        log->write("first");
        log->write("second");
        log->flush();
        std::string written;
        for (const std::string& line : gate.lines)
            written += line + "\n";
        return written;
    });
    EXPECT_EQ(lines,
        "the log writes each line at once, having no thread: Resource\n"
        "first\nsecond\n");
}

TEST(Log, WithoutSinkNobodyListensAndNothingWaits)
{
    Log log({});
    log.write("unheard");
    log.flush();

    EXPECT_FALSE(log.isListening());
    test::CapturedLog heard;
    EXPECT_TRUE(heard.log().isListening());
}

TEST(Log, LinesReachEverySink)
{
    HeldSink::Gate first;
    HeldSink::Gate second;
    std::vector<std::unique_ptr<LogSink>> sinks;
    sinks.push_back(std::make_unique<HeldSink>(first));
    sinks.push_back(std::make_unique<HeldSink>(second));
    first.letGo.set_value();
    second.letGo.set_value();

    Log(std::move(sinks)).write("line");

    EXPECT_EQ(first.lines, Lines{"line"});
    EXPECT_EQ(second.lines, Lines{"line"});
}

TEST(StandardErrorSink, WritesTheLineAndALineEnd)
{
    testing::internal::CaptureStderr();
    standardErrorSink()->writeLine("100% of a line with %s");

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "100% of a line with %s\n");
}

TEST(ProgramLog, GoesToStandardErrorWhenTheEnvironmentAsks)
{
    const test::EnvironmentVariable wish("QUORVANE_LOG", "stderr");
    testing::internal::CaptureStderr();
    makeProgramLog("quorvane-test", false)->write("asked for");

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "asked for\n");
}

TEST(ProgramLog, DoesNotEchoWhereStandardErrorIsNoTerminal)
{
    const test::EnvironmentVariable wish("QUORVANE_LOG", std::nullopt);
    testing::internal::CaptureStderr();
    makeProgramLog("quorvane-test", true)->write("not asked for");

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace quorvane::platform
