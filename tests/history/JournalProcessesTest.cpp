#include "history/Database.h"
#include "history/Journal.h"

#include "tests/history/JournalFolder.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <random>
#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::history {

namespace {

std::string textOf(int writer, int made)
{
    return test::textOfLines(
        50, static_cast<std::size_t>(made), std::to_string(writer) + "/" + std::to_string(made));
}

// The result of an operation that is repeated while the other processes are faster for as long as it waits.
template <typename Operation> auto patiently(const Journal& journal, Operation operation)
{
    auto result = operation();
    while (!result && journal.problem() && journal.problem()->ends_with("database is locked"))
        result = operation();
    return result;
}

// Writes versions, one after the other, until it is done or killed. Returns the number of failures.
int write(test::JournalFolder& folder, int writer, int count)
{
    int failures = 0;
    for (int made = 0; made < count; ++made) {
        const auto journal = folder.journal();
        const std::string text = textOf(writer, made);
        const auto number = patiently(*journal, [&] { return journal->begin(test::version(text)); });
        const auto finish = [&] { return journal->finish(*number, VersionState::done); };
        failures += number && patiently(*journal, finish) ? 0 : 1;
    }
    return failures;
}

pid_t startWriter(test::JournalFolder& folder, int writer, int count)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(write(folder, writer, count));
    return child;
}

void setAside(const test::JournalFolder& folder)
{
    ASSERT_TRUE(folder.place().setAside(folder.place().databaseIdentity()));
}

} // namespace

TEST(JournalProcesses, EightAtOnceKeepAllTheirVersions)
{
    test::JournalFolder folder;
    constexpr int writers = 8;
    constexpr int count = 8;

    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer)
        children.push_back(startWriter(folder, writer, count));
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "a version was not kept";
    }

    const auto journal = folder.journal();
    std::multiset<std::string> kept;
    for (const JournalVersion& version : journal->versions()) {
        EXPECT_EQ(version.state, VersionState::done);
        kept.insert(journal->bytesOf(version.number).value_or("unreadable"));
    }
    std::multiset<std::string> written;
    for (int writer = 0; writer < writers; ++writer)
        for (int made = 0; made < count; ++made)
            written.insert(textOf(writer, made));
    EXPECT_EQ(kept, written);
    EXPECT_FALSE(folder.mayBeUnderWay());
}

TEST(JournalProcesses, AWriterThatIsKilledLeavesAUsableJournal)
{
    test::JournalFolder folder;
    std::mt19937 random(1);
    for (int round = 0; round < 60; ++round) {
        const pid_t child = startWriter(folder, round, 1000);
        usleep(static_cast<useconds_t>(random() % 30000)); // at any point of its work
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);

        const auto journal = folder.journal();
        const auto versions = journal->versions();
        ASSERT_FALSE(journal->problem()) << *journal->problem();
        ASSERT_FALSE(journal->takeNotice());
        const bool isAnyUnderWay = std::any_of(versions.begin(), versions.end(),
            [](const JournalVersion& version) { return version.state == VersionState::underWay; });
        ASSERT_TRUE(!isAnyUnderWay || folder.mayBeUnderWay()) << "no marker for a version under way";
        const std::string next = "after " + std::to_string(round);
        const auto number = journal->record(test::version(next));
        ASSERT_TRUE(number) << journal->problem().value_or("");
        ASSERT_EQ(journal->bytesOf(*number), next);
        if (!versions.empty()) {
            ASSERT_TRUE(journal->bytesOf(versions.front().number));
            ASSERT_EQ(*number, versions.front().number + 1);
        }
    }
}

TEST(JournalProcesses, WaitForAnotherOnceAndThenForAMomentUntilItIsDone)
{
    using Clock = std::chrono::steady_clock;
    test::JournalFolder folder;
    const auto journal = folder.journal();
    ASSERT_TRUE(journal->record(test::version("one")));
    Database other(folder.place().databaseFile());

    // given another program that has not let go of the journal for as long as a write waits
    other.execute("BEGIN EXCLUSIVE");
    ASSERT_FALSE(journal->record(test::version("two")));
    ASSERT_TRUE(journal->problem());

    // then nothing waits that long again
    const auto before = Clock::now();
    EXPECT_FALSE(journal->newest());
    EXPECT_FALSE(journal->record(test::version("two")));
    EXPECT_FALSE(journal->undoable());
    EXPECT_LT(Clock::now() - before, Database::usualWait);

    // until it has let go
    other.execute("COMMIT");
    EXPECT_EQ(journal->record(test::version("two")), 2) << journal->problem().value_or("");
    other.execute("BEGIN EXCLUSIVE");
    std::thread release([&other] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        other.execute("COMMIT");
    });
    EXPECT_EQ(journal->record(test::version("three")), 3) << journal->problem().value_or("");
    release.join();
}

TEST(JournalProcesses, ASecondJournalGoesOnInTheOneThatIsThereNow)
{
    test::JournalFolder folder;
    const auto first = folder.journal();
    ASSERT_TRUE(first->record(test::version("one")));
    setAside(folder);
    ASSERT_TRUE(folder.journal()->record(test::version("two")));

    ASSERT_EQ(first->record(test::version("three")), 2);

    EXPECT_EQ(folder.journal()->bytesOf(1), "two");
    EXPECT_EQ(folder.journal()->bytesOf(2), "three");
}

TEST(JournalProcesses, OneThatOnlyReadsGoesOnInTheOneThatIsThereNow)
{
    // given a journal that has read the versions of one that is in order
    test::JournalFolder folder;
    ASSERT_TRUE(folder.journal()->record(test::version("one")));
    ASSERT_TRUE(folder.journal()->record(test::version("two")));
    const auto reading = folder.journal();
    ASSERT_EQ(test::numbersIn(*reading), (std::vector<std::int64_t>{2, 1}));
    const std::int64_t mark = reading->changeMark();

    // when another program renames that and starts a new one
    setAside(folder);
    ASSERT_TRUE(folder.journal()->record(test::version("three")));

    // then each of its operations reads the new one
    EXPECT_NE(reading->changeMark(), mark);
    EXPECT_EQ(test::numbersIn(*reading), (std::vector<std::int64_t>{1}));
    EXPECT_EQ(reading->bytesOf(1), "three");
    EXPECT_FALSE(reading->problem());
    EXPECT_FALSE(reading->takeNotice());
}

TEST(JournalProcesses, OneThatIsGoneHasNoVersionsAndIsStartedAnew)
{
    test::JournalFolder folder;
    const auto open = folder.journal();
    ASSERT_TRUE(open->record(test::version("one")));

    setAside(folder);

    EXPECT_TRUE(open->versions().empty());
    EXPECT_FALSE(open->problem());
    EXPECT_EQ(open->changeMark(), 0);
    EXPECT_EQ(open->record(test::version("two")), 1);
    EXPECT_EQ(folder.journal()->bytesOf(1), "two");
}

} // namespace quorvane::history
