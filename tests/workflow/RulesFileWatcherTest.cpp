#include "workflow/RulesFileWatcher.h"

#include "tests/support/CapturedLog.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "workflow/RunState.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

using namespace std::chrono_literals;

// Answers polls of a file with the given times, one each; further polls block.
class GivenTimes {
public:
    void give(std::uint64_t time)
    {
        const std::lock_guard lock(m_mutex);
        m_times.push_back(time);
        m_changed.notify_all();
    }

    std::optional<std::uint64_t> look()
    {
        std::unique_lock lock(m_mutex);
        ++m_looks;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isClosed || !m_times.empty(); });
        if (m_times.empty())
            return std::nullopt;
        const std::uint64_t time = m_times.front();
        m_times.pop_front();
        return time;
    }

    // Waits until poll number `count` has begun, so that all previous ones are complete.
    void waitForLook(int count)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_looks >= count; });
    }

    // Polls no longer block.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::uint64_t> m_times;
    int m_looks = 0;
    bool m_isClosed = false;
};

} // namespace

TEST(RulesFileWatcher, ReloadsOnceForEachChangeOfOthers)
{
    RunState run;
    test::CapturedLog log;
    GivenTimes times;
    std::atomic<int> reloads = 0;
    std::atomic<bool> otherPath = false;
    {
        const RulesFileWatcher watcher(
            "/rules.rc", run, log.log(), [&] { ++reloads; }, 1ms,
            [&](const std::string& path) {
                otherPath = otherPath || path != "/rules.rc";
                return times.look();
            });
        times.give(1000);
        times.give(1000);
        times.waitForLook(3);
        EXPECT_EQ(reloads, 0);
        times.give(1001);
        times.waitForLook(4);
        EXPECT_EQ(reloads, 1);
        run.internalWrite = true;
        times.give(1002);
        times.waitForLook(5);
        EXPECT_EQ(reloads, 1);
        EXPECT_FALSE(run.internalWrite);
        times.give(1003);
        times.waitForLook(6);
        EXPECT_EQ(reloads, 2);
        times.close();
    }
    EXPECT_FALSE(otherPath);
    EXPECT_EQ(log.lines(),
        (std::vector<std::string>{"monitorFileModification starting",
            "reloading data on file modification 1000 <=> 1001",
            "reloading data on file modification 1002 <=> 1003"}));
}

TEST(RulesFileWatcher, ReportsWhatItTookForTheProgramsOwnAndOnceMoreWhenThatSecondIsOver)
{
    RunState run;
    test::CapturedLog log;
    GivenTimes times;
    std::atomic<int> absorbed = 0;
    const RulesFileWatcher watcher(
        "/rules.rc", run, log.log(), [] {}, 1ms, [&](const std::string& /*path*/) { return times.look(); },
        [&] { ++absorbed; });
    times.give(1000);
    times.waitForLook(2);
    EXPECT_EQ(absorbed, 0);
    run.internalWrite = true;
    times.give(1001);
    times.waitForLook(3);
    EXPECT_EQ(absorbed, 1);
    times.give(1001);
    times.waitForLook(4);
    EXPECT_EQ(absorbed, 2);
    times.give(1001);
    times.waitForLook(5);
    EXPECT_EQ(absorbed, 2);
    times.close();
}

TEST(RulesFileWatcher, SeesTheTimesOfAFile)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("rules", "");
    const auto setTime = [&file](time_t seconds) {
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    };
    setTime(1000);
    RunState run;
    run.internalWrite = true;
    test::CapturedLog log;
    std::promise<void> reloaded;
    const RulesFileWatcher watcher(
        file, run, log.log(), [&] { reloaded.set_value(); }, 1ms);
    while (run.internalWrite) // until the first poll
        std::this_thread::yield();
    setTime(2000);
    reloaded.get_future().wait();
}

TEST(RulesFileWatcher, EndsItsThreadWithoutWaitingForTheNextLook)
{
    RunState run;
    test::CapturedLog log;
    const auto times = std::make_shared<GivenTimes>();
    times->give(1000);
    {
        const RulesFileWatcher watcher(
            "/rules.rc", run, log.log(), [] {}, 24h, [times](const std::string&) { return times->look(); });
        times->waitForLook(1);
    }
    EXPECT_EQ(times.use_count(), 1) << "the thread, which holds it too, has not been left behind";
}

TEST(RulesFileWatcher, EndsBeforeItsFirstLook)
{
    RunState run;
    test::CapturedLog log;
    for (int number = 0; number < 50; ++number)
        const RulesFileWatcher watcher(
            "/nonexistent/rules.rc", run, log.log(), [] {}, 24h);
    EXPECT_EQ(log.lines(), std::vector<std::string>(50, "monitorFileModification starting"));
}

TEST(RulesFileWatcher, ALookThatNeverEndsIsLeftBehindAndTouchesNothingAnyMore)
{
    const auto times = std::make_shared<GivenTimes>();
    const auto hasLooked = std::make_shared<std::promise<void>>();
    bool reloaded = false;
    {
        RunState run;
        test::CapturedLog log;
        const RulesFileWatcher watcher(
            "/rules.rc", run, log.log(), [&] { reloaded = true; }, 1ms,
            [times, hasLooked, looks = 0](const std::string&) mutable {
                const auto time = times->look();
                if (++looks == 2)
                    hasLooked->set_value();
                return time;
            });
        times->give(1000);
        times->waitForLook(2);
    } // the second poll still blocks, while run and log are gone
    times->give(2000);
    hasLooked->get_future().wait();
    EXPECT_FALSE(reloaded);
}

TEST(RulesFileWatcher, DoesWithoutAThreadWhereNoneCanBeHad)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread sanitizer cannot do without a thread of its own.";
#endif
    const std::string answer = test::answerOfChild([] {
        if (!test::forbidThreads())
            return std::string("not prepared");
        test::CapturedLog log; // which has none either
        RunState run;
        const RulesFileWatcher watcher("/nowhere", run, log.log(), [] {});
        return log.lines().back();
    });
    EXPECT_TRUE(answer.starts_with("the rules file is not watched, for want of a thread: ")) << answer;
}

} // namespace quorvane::workflow
