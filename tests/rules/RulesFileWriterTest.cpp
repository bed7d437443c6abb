#include "rules/RulesFileWriter.h"

#include "rules/RuleManager.h"
#include "rules/RulesContent.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/SystemCalls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace quorvane::rules {

namespace {

std::string lineAbout(const std::string& path)
{
    return "allow path \"" + path + "\" \"any\" r \"\" \"\" \"0\"\n";
}

class RulesFileWriter : public testing::Test {
protected:
    RulesFileWriter()
    {
        for (const char* place : {"/a", "/b", "/c"}) {
            const PolicyRuleFields rule{
                .policyType = 1, .path = place, .processName = "any", .operations = 1};
            content.append(rule);
        }
    }
    std::string failure(const std::string& reason) const
    {
        return "Failed write() operation on file '" + path + "' " + reason;
    }
    std::string contents() const { return test::TemporaryFolder::contents(path); }

    const test::TemporaryFolder folder;
    const std::string path = folder.path("rules");
    RulesContent content;
    const std::string whole = lineAbout("/a") + lineAbout("/b") + lineAbout("/c");
    const std::size_t ruleLength = lineAbout("/a").size();
};

using Strings = std::vector<std::string>;

} // namespace

TEST(RulesContent, IsTheSameHoweverMuchWasExpected)
{
    const PolicyRuleFields rule{.policyType = 1, .path = "/a", .processName = "any", .operations = 1};
    for (const std::uintmax_t bytes : {std::uintmax_t{0}, std::uintmax_t{1000}, UINTMAX_MAX}) {
        for (const std::size_t rules : {0U, 1U, 100U}) {
            RulesContent content(LineEnds::cut, rules, bytes);
            content.append(rule);
            content.append(rule);
            EXPECT_EQ(content.bytes(), lineAbout("/a") + lineAbout("/a"));
        }
    }
}

TEST_F(RulesFileWriter, WritesEverythingWithOneCall)
{
    int calls = 0;
    const test::SystemCallHook hook(test::SystemCall::write, [&](int) -> std::optional<ssize_t> {
        ++calls;
        return std::nullopt;
    });
    const WriteResult result = writeRulesFile(path, content);

    EXPECT_TRUE(result.opened);
    EXPECT_EQ(result.message, std::nullopt);
    EXPECT_EQ(result.warnings, Strings());
    EXPECT_EQ(contents(), whole);
    EXPECT_EQ(calls, 1);
}

TEST_F(RulesFileWriter, SaysWhichFileItLeft)
{
    std::error_code error;
    const WriteResult result = writeRulesFile(path, content);
    EXPECT_EQ(result.identity, platform::FileIdentity::ofPath(path, error));
}

TEST_F(RulesFileWriter, KeepsTheOldContentsUntilTheyAreWrittenOver)
{
    const std::string old(1000, 'x');
    folder.write("rules", old);
    std::string atWrite;
    const test::SystemCallHook hook(test::SystemCall::write, [&](int) -> std::optional<ssize_t> {
        atWrite = contents();
        return std::nullopt;
    });
    writeRulesFile(path, content);

    EXPECT_EQ(atWrite, old);
    EXPECT_EQ(contents(), whole);
}

TEST_F(RulesFileWriter, OfNoRulesLeavesAnEmptyFile)
{
    folder.write("rules", "old");
    EXPECT_EQ(writeRulesFile(path, RulesContent()).message, std::nullopt);
    EXPECT_EQ(contents(), "");
}

TEST_F(RulesFileWriter, SyncsTheFileAndTheFolderOfANewOne)
{
    int syncs = 0;
    const test::SystemCallHook hook(test::SystemCall::fsync, [&](int) -> std::optional<ssize_t> {
        ++syncs;
        return std::nullopt;
    });
    writeRulesFile(path, content);
    EXPECT_EQ(syncs, 2);
    writeRulesFile(path, content);
    EXPECT_EQ(syncs, 3);
}

TEST_F(RulesFileWriter, RepeatsACallThatASignalInterrupted)
{
    const test::SystemCallHook hook(
        test::SystemCall::write, test::failing(EINTR, [](int number) { return number < 3; }));
    EXPECT_EQ(writeRulesFile(path, content).message, std::nullopt);
    EXPECT_EQ(contents(), whole);
}

TEST_F(RulesFileWriter, GoesOnAfterACallThatWroteLess)
{
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    const rlimit limited{ruleLength + 5, RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    // The limit is raised after the first call, which wrote as much as was allowed.
    const test::SystemCallHook hook(test::SystemCall::write, [&](int number) -> std::optional<ssize_t> {
        if (number == 1)
            setrlimit(RLIMIT_FSIZE, &unlimited);
        return std::nullopt;
    });
    const WriteResult result = writeRulesFile(path, content);
    setrlimit(RLIMIT_FSIZE, &unlimited);

    EXPECT_EQ(result.message, std::nullopt);
    EXPECT_EQ(contents(), whole);
}

TEST_F(RulesFileWriter, LeavesHalfARuleBeforeTheNextWhereRoomCameTooLate)
{
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    const rlimit limited{ruleLength + 5, RLIM_INFINITY};
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const test::SystemCallHook hook(test::SystemCall::write, [&](int number) -> std::optional<ssize_t> {
        if (number == 2)
            setrlimit(RLIMIT_FSIZE, &unlimited);
        return std::nullopt;
    });
    const WriteResult result = writeRulesFile(path, content);
    setrlimit(RLIMIT_FSIZE, &unlimited);
    std::signal(SIGXFSZ, before);

    EXPECT_EQ(result.message, failure("File too large (27)"));
    EXPECT_EQ(contents(), lineAbout("/a") + lineAbout("/b").substr(0, 5) + lineAbout("/c"));
}

TEST_F(RulesFileWriter, PutsTheOldContentsBackWhereThereIsNoRoomForAllRules)
{
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    const rlimit limited{ruleLength + 5, RLIM_INFINITY};
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    for (const std::string& old : {std::string(1000, 'x'), std::string("old")}) {
        folder.write("rules", old);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
        const WriteResult result = writeRulesFile(path, content, old);
        setrlimit(RLIMIT_FSIZE, &unlimited);

        EXPECT_EQ(result.message, failure("File too large (27)"));
        EXPECT_FALSE(result.opened);
        EXPECT_EQ(contents(), old);
    }
    std::signal(SIGXFSZ, before);
}

TEST_F(RulesFileWriter, GoesOnWithTheNextRuleAfterAFailureAndSaysWhy)
{
    const test::SystemCallHook hook(
        test::SystemCall::write, test::failing(ENOSPC, [](int number) { return number == 0; }));
    const WriteResult result = writeRulesFile(path, content);

    EXPECT_TRUE(result.opened);
    EXPECT_EQ(result.message, failure("No space left on device (28)"));
    EXPECT_EQ(contents(), lineAbout("/b") + lineAbout("/c"));
}

TEST_F(RulesFileWriter, RemembersTheLastFailureAndCutsTheFileToWhatWasWritten)
{
    folder.write("rules", std::string(1000, 'x'));
    const test::SystemCallHook hook(test::SystemCall::write, [&](int number) -> std::optional<ssize_t> {
        errno = number == 0 ? ENOSPC : EIO;
        return number < 2 ? std::optional<ssize_t>(-1) : std::nullopt;
    });

    EXPECT_EQ(writeRulesFile(path, content).message, failure("Input/output error (5)"));
    EXPECT_EQ(contents(), lineAbout("/c"));
}

TEST_F(RulesFileWriter, EndsAlsoWhereNothingIsWrittenAndNoReasonGiven)
{
    const test::SystemCallHook hook(test::SystemCall::write, [](int) { return std::optional<ssize_t>(0); });
    EXPECT_EQ(writeRulesFile(path, content).message, failure("Input/output error (5)"));
    EXPECT_EQ(contents(), "");
}

TEST_F(RulesFileWriter, TellsWhatFailsBesidesYetHasWritten)
{
    const struct {
        test::SystemCall call;
        const char* warning;
    } cases[] = {
        {test::SystemCall::fsync, "Failed to sync file '"},
        {test::SystemCall::fchmod, "Failed to set the permissions of file '"},
    };
    writeRulesFile(path, content);
    for (const auto& c : cases) {
        const test::SystemCallHook hook(c.call, test::failing(EIO, [](int) { return true; }));
        const WriteResult result = writeRulesFile(path, content);
        EXPECT_TRUE(result.opened);
        EXPECT_EQ(result.message, std::nullopt);
        EXPECT_EQ(result.warnings, Strings{c.warning + path + "': Input/output error (5)"});
        EXPECT_EQ(contents(), whole);
    }
}

TEST_F(RulesFileWriter, FailsWhereOldBytesStayBehindTheNewOnes)
{
    const std::string old(1000, 'x');
    const test::SystemCallHook hook(
        test::SystemCall::ftruncate, test::failing(EIO, [](int) { return true; }));
    const std::string reason = "Failed to cut to its length file '" + path + "': Input/output error (5)";

    folder.write("rules", old);
    EXPECT_EQ(writeRulesFile(path, content).message, reason);
    EXPECT_EQ(contents(), whole + old.substr(whole.size()));

    folder.write("rules", old);
    const WriteResult result = writeRulesFile(path, content, old);
    EXPECT_EQ(result.message, reason);
    EXPECT_FALSE(result.opened);
    EXPECT_EQ(contents(), old);

    folder.write("rules", "old");
    EXPECT_EQ(writeRulesFile(path, content).message, std::nullopt) << "nothing was to be cut";
    EXPECT_EQ(contents(), whole);
}

TEST_F(RulesFileWriter, TellsThatClosingFailedButNotThatASignalCame)
{
    const auto closing = [&](int error) {
        const test::SystemCallHook hook(
            test::SystemCall::close, test::failing(error, [](int) { return true; }));
        return writeRulesFile(path, content).warnings;
    };
    writeRulesFile(path, content);
    EXPECT_EQ(closing(EIO), Strings{"Failed to close file '" + path + "': Input/output error (5)"});
    EXPECT_EQ(closing(EINTR), Strings());
}

TEST_F(RulesFileWriter, OfWholeLinesWritesEveryByte)
{
    const PolicyRuleFields beyondAscii{
        .policyType = 1, .path = "/\xC3\xA9", .processName = "any", .operations = 1};
    RulesContent cut;
    RulesContent allBytes(LineEnds::whole);
    cut.append(beyondAscii);
    allBytes.append(beyondAscii);
    const std::string line = lineAbout("/\xC3\xA9");

    EXPECT_EQ(cut.bytes(), line.substr(0, line.size() - 1));
    EXPECT_EQ(allBytes.bytes(), line);
}

TEST_F(RulesFileWriter, KnowsWhereEachRuleEnds)
{
    EXPECT_EQ(content.endOfRuleAt(0), ruleLength);
    EXPECT_EQ(content.endOfRuleAt(ruleLength - 1), ruleLength);
    EXPECT_EQ(content.endOfRuleAt(ruleLength), 2 * ruleLength);
    EXPECT_EQ(content.endOfRuleAt(whole.size() - 1), whole.size());
}

TEST(RuleManagerWriting, TellsWarningsUntilTheNextWrite)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r\n");
    const std::string path = sandbox.folder.path("out");
    {
        const test::SystemCallHook hook(
            test::SystemCall::fchmod, test::failing(EPERM, [](int) { return true; }));
        EXPECT_TRUE(store->writeToFile(path));
    }
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
    EXPECT_EQ(store->writeWarnings(),
        Strings{"Failed to set the permissions of file '" + path + "': Operation not permitted (1)"});
    EXPECT_TRUE(store->writeToFile(path));
    EXPECT_EQ(store->writeWarnings(), Strings());
}

} // namespace quorvane::rules
