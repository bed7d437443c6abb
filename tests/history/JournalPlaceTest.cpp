#include "history/JournalPlace.h"

#include "history/Journal.h"

#include "tests/history/JournalFolder.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::history {

namespace {

mode_t modeOf(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

// The result of recording a version: its number, or the problem.
std::string answer(Journal& journal)
{
    const auto number = journal.begin(test::version("rules\n"));
    return number ? std::to_string(*number) : journal.problem().value_or("no problem");
}

void setGroupAndOwner(const std::string& path, uid_t user)
{
    ASSERT_EQ(lchown(path.c_str(), user, user), 0);
}

constexpr uid_t nobody = 65534;

} // namespace

TEST(JournalPlace, IsInTheFolderForStateOrInTheHome)
{
    const test::EnvironmentVariable home("HOME", "/home/of");
    {
        const test::EnvironmentVariable state("XDG_STATE_HOME", "/state");
        EXPECT_EQ(defaultStateFolder(), "/state/quorvane");
    }
    for (const auto& given : {std::optional<std::string>("state"), std::optional<std::string>()}) {
        const test::EnvironmentVariable state("XDG_STATE_HOME", given);
        EXPECT_EQ(defaultStateFolder(), "/home/of/.local/state/quorvane") << "none, or a relative one";
    }
}

TEST(JournalPlace, IsInTheHomeOfTheAccountWithoutHOME)
{
    const test::EnvironmentVariable state("XDG_STATE_HOME", std::nullopt);
    const test::EnvironmentVariable home("HOME", std::nullopt);

    EXPECT_EQ(defaultStateFolder().front(), '/');
}

TEST(JournalPlace, IsForItsOwnerOnly)
{
    test::JournalFolder folder;
    std::filesystem::create_directories(folder.state());
    ASSERT_EQ(chmod(folder.state().c_str(), 0755), 0);

    ASSERT_EQ(answer(*folder.journal()), "1");

    EXPECT_EQ(modeOf(folder.state()), 0700U);
    EXPECT_EQ(modeOf(folder.place().databaseFile()), 0600U);
    EXPECT_EQ(modeOf(folder.place().databaseFile() + "-journal"), 0600U);
    EXPECT_EQ(modeOf(folder.place().markerFile()), 0600U);
}

TEST(JournalPlace, IsRefusedWithoutAFolder)
{
    platform::Log log({});
    const auto journal = Journal::open("", "/rules.rc", {}, log);

    EXPECT_FALSE(journal->begin(test::version("rules")));
    EXPECT_TRUE(journal->problem());
    EXPECT_TRUE(journal->versions().empty());
}

TEST(JournalPlace, IsRefusedWhereALinkOrAnythingButAFileStandsForTheJournal)
{
    const struct {
        const char* why;
        void (*make)(const test::JournalFolder&);
    } cases[] = {
        {"a link to a file",
            [](const test::JournalFolder& folder) {
                std::filesystem::create_symlink(
                    folder.folder().write("target", ""), folder.place().databaseFile());
            }},
        {"a link to nothing",
            [](const test::JournalFolder& folder) {
                std::filesystem::create_symlink(
                    folder.folder().path("target"), folder.place().databaseFile());
            }},
        {"a folder",
            [](const test::JournalFolder& folder) {
                std::filesystem::create_directory(folder.place().databaseFile());
            }},
        {"a pipe",
            [](const test::JournalFolder& folder) {
                ASSERT_EQ(mkfifo(folder.place().databaseFile().c_str(), 0600), 0);
            }},
    };
    for (const auto& c : cases) {
        test::JournalFolder folder;
        std::filesystem::create_directories(folder.state());
        c.make(folder);
        const auto journal = folder.journal();
        EXPECT_FALSE(journal->begin(test::version("rules"))) << c.why;
        ASSERT_TRUE(journal->problem()) << c.why;
        EXPECT_NE(journal->problem()->find("is no regular file"), std::string::npos) << *journal->problem();
        EXPECT_FALSE(std::filesystem::exists(folder.folder().path("target"))
            && std::filesystem::file_size(folder.folder().path("target")) != 0)
            << c.why;
    }
}

TEST(JournalPlace, IsRefusedWhereAFileStandsForTheFolder)
{
    test::JournalFolder folder;
    folder.folder().write("state/quorvane", "a file");

    EXPECT_NE(answer(*folder.journal()).find("is no folder"), std::string::npos);
}

TEST(JournalPlace, IsRefusedInAFolderOfAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to make files of another user";
    test::JournalFolder folder;
    std::filesystem::create_directories(folder.state());
    setGroupAndOwner(folder.state(), nobody);

    EXPECT_NE(answer(*folder.journal()).find("belongs to another user"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(folder.state()));
}

TEST(JournalPlace, IsNotMadeByRootInAHomeOfAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    test::JournalFolder folder;
    std::filesystem::create_directory(folder.folder().path("state"));
    setGroupAndOwner(folder.folder().path("state"), nobody);

    EXPECT_NE(answer(*folder.journal()).find("belongs to another user"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder.state()));
}

TEST(JournalPlace, IsRefusedToRootForAFileOfAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    test::JournalFolder folder;
    folder.folder().write("rules.rc", "rules\n");
    setGroupAndOwner(folder.rules(), nobody);

    EXPECT_NE(answer(*folder.journal()).find("belongs to another user"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder.state()));
}

TEST(JournalPlace, IsRefusedWhenTheJournalBelongsToAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to make files of another user";
    test::JournalFolder folder;
    ASSERT_EQ(answer(*folder.journal()), "1");
    setGroupAndOwner(folder.place().databaseFile(), nobody);

    const auto journal = folder.journal();

    EXPECT_TRUE(journal->versions().empty());
    EXPECT_NE(answer(*journal).find("belongs to another user"), std::string::npos);
}

TEST(JournalPlace, ThatCannotBeWrittenIsAProblemAndStillReadable)
{
    test::JournalFolder folder;
    ASSERT_EQ(answer(*folder.journal()), "1");
    if (geteuid() == 0) {
        setGroupAndOwner(folder.folder().path(), nobody);
        setGroupAndOwner(folder.folder().path("state"), nobody);
        setGroupAndOwner(folder.state(), nobody);
        for (const auto& file : std::filesystem::directory_iterator(folder.state()))
            setGroupAndOwner(file.path(), nobody);
    }
    ASSERT_EQ(chmod(folder.place().databaseFile().c_str(), 0400), 0);

    const std::string answers = test::answerOfChild([&folder] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        const auto journal = folder.journal();
        const std::string first = answer(*journal);
        return first + "|" + journal->bytesOf(1).value_or("unreadable") + "|" + answer(*journal);
    });

    EXPECT_NE(answers.find("cannot be used"), std::string::npos) << answers;
    EXPECT_NE(answers.find("|rules\n|"), std::string::npos) << answers;
}

TEST(JournalPlace, WithoutRoomIsAProblemAndGoesOnWhenThereIsRoom)
{
    test::JournalFolder folder;
    ASSERT_EQ(answer(*folder.journal()), "1");

    const std::string answers = test::answerOfChild([&folder] {
        // Like a full disk: a write takes fewer bytes, or none. Linux also raises a signal.
        signal(SIGXFSZ, SIG_IGN);
        const auto journal = folder.journal();
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlim_t before = std::exchange(limit.rlim_cur, 16384);
        setrlimit(RLIMIT_FSIZE, &limit);
        std::string noise(100000, '\0');
        std::uint64_t state = 1;
        for (char& letter : noise) {
            state = state * 6364136223846793005U + 1442695040888963407U;
            letter = static_cast<char>(state >> 56U);
        }
        const bool isRefused = !journal->begin(test::version(noise)) && journal->problem();
        limit.rlim_cur = before;
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto number = journal->begin(test::version(noise));
        return std::string(isRefused ? "refused" : "taken") + ", then "
            + (number && journal->bytesOf(*number) == noise && journal->bytesOf(1) == "rules\n" ? "taken"
                                                                                                : "lost");
    });

    EXPECT_EQ(answers, "refused, then taken");
}

TEST(JournalPlace, HasNoMarkerWhereThereCanBeNone)
{
    const test::TemporaryFolder folder;
    EXPECT_FALSE(Journal::mayBeUnderWay(folder.path("missing"), folder.path("rules.rc")));
    EXPECT_FALSE(Journal::mayBeUnderWay(folder.write("file", "x"), folder.path("rules.rc")));
    std::filesystem::create_symlink("loop", folder.path("loop"));
    EXPECT_TRUE(Journal::mayBeUnderWay(folder.path("loop"), folder.path("rules.rc"))) << "it cannot be told";
}

} // namespace quorvane::history
