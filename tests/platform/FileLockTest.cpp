#include "platform/FileLock.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace quorvane::platform {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds once{0};
constexpr milliseconds ample{60'000}; // longer than any test lasts

class FileLockTest : public testing::Test {
protected:
    FileLock exclusive(milliseconds wait = once) const
    {
        return FileLock::take(path, LockMode::exclusive, wait);
    }
    FileLock shared() const { return FileLock::take(path, LockMode::shared, once); }
    std::size_t files() const
    {
        const std::filesystem::directory_iterator all(folder.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    const test::TemporaryFolder folder;
    const std::string path = folder.path("rules");
};

} // namespace

TEST_F(FileLockTest, ExclusiveExcludesEveryOther)
{
    folder.write("rules", "text");
    const FileLock lock = exclusive();
    const FileLock second = exclusive();
    const FileLock reader = shared();

    EXPECT_TRUE(lock.isHeld());
    EXPECT_EQ(lock.problem(), "");
    EXPECT_FALSE(second.isHeld());
    EXPECT_TRUE(second.isHeldByAnother());
    EXPECT_EQ(second.problem(), "Another process is using '" + path + "'");
    EXPECT_TRUE(reader.isHeldByAnother());
}

TEST_F(FileLockTest, SharedExcludesExclusiveOnly)
{
    folder.write("rules", "text");
    const FileLock first = shared();
    const FileLock second = shared();

    EXPECT_TRUE(first.isHeld());
    EXPECT_TRUE(second.isHeld());
    EXPECT_TRUE(exclusive().isHeldByAnother());
}

TEST_F(FileLockTest, EndsWithTheObject)
{
    folder.write("rules", "text");
    {
        const FileLock lock = exclusive();
        ASSERT_TRUE(lock.isHeld());
    }
    EXPECT_TRUE(exclusive().isHeld());
    FileLock lock = exclusive();
    lock = FileLock();
    EXPECT_TRUE(exclusive().isHeld());
}

TEST_F(FileLockTest, MovesAlong)
{
    folder.write("rules", "text");
    FileLock first = exclusive();
    FileLock second(std::move(first));
    FileLock third;
    third = std::move(second);

    EXPECT_TRUE(third.isHeld());
    EXPECT_TRUE(exclusive().isHeldByAnother());
}

TEST_F(FileLockTest, NeitherChangesNorLeavesAFile)
{
    folder.write("rules", "text");
    struct stat before { };
    struct stat after { };
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(exclusive().isHeld());
    ASSERT_EQ(stat(path.c_str(), &after), 0);

    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
    EXPECT_EQ(before.st_ctim.tv_nsec, after.st_ctim.tv_nsec);
    EXPECT_EQ(files(), 1U);
}

TEST_F(FileLockTest, IsNotPassedOnToPrograms)
{
    folder.write("rules", "text");
    const FileLock lock = exclusive();
    int locks = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone) != path)
            continue;
        ++locks;
        EXPECT_TRUE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
    }
    EXPECT_EQ(locks, 1);
}

TEST_F(FileLockTest, EndsWhileAStartingChildStillSharesTheDescriptor)
{
    folder.write("rules", "text");
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    pid_t child = -1;
    {
        const FileLock lock = exclusive();
        child = fork();
        if (child == 0) {
            close(ends[1]);
            char byte = 0;
            _exit(read(ends[0], &byte, 1) == 0 ? 0 : 1); // until the parent has checked
        }
    }
    EXPECT_TRUE(exclusive().isHeld());
    close(ends[1]);
    close(ends[0]);
    waitpid(child, nullptr, 0);
}

TEST_F(FileLockTest, EndsWithItsProcess)
{
    folder.write("rules", "text");
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const FileLock lock = exclusive();
        const bool told = write(ends[1], "x", 1) == 1;
        while (told)
            pause();
        _exit(1);
    }
    char byte = 0;
    ASSERT_EQ(read(ends[0], &byte, 1), 1);
    EXPECT_TRUE(exclusive().isHeldByAnother());

    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(exclusive().isHeld());
    close(ends[0]);
    close(ends[1]);
}

TEST_F(FileLockTest, WaitsForAHolderThatIsSoonDone)
{
    folder.write("rules", "text");
    FileLock first = exclusive();
    std::thread holder([&] { first = FileLock(); });
    const FileLock second = exclusive(ample);
    holder.join();

    EXPECT_TRUE(second.isHeld());
}

TEST_F(FileLockTest, StopsWaitingWhenTheTimeIsOver)
{
    folder.write("rules", "text");
    const FileLock first = exclusive();

    EXPECT_TRUE(exclusive(milliseconds(5)).isHeldByAnother());
}

TEST_F(FileLockTest, OfAFileThatMayOnlyBeReadIsHadInBothModes)
{
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    folder.write("rules", "text");
    std::filesystem::permissions(path, std::filesystem::perms::others_read);

    EXPECT_EQ(test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        const bool forReading = shared().isHeld();
        const bool forWriting = exclusive().isHeld();
        return std::string(forReading ? "shared " : "") + (forWriting ? "exclusive" : "");
    }),
        "shared exclusive");
}

TEST_F(FileLockTest, LiesOnTheFolderWhereThereIsNoFileAndMakesNone)
{
    FileLock lock = exclusive();

    EXPECT_TRUE(lock.isHeld());
    EXPECT_TRUE(lock.isAtPath());
    EXPECT_EQ(files(), 0U);
    EXPECT_TRUE(exclusive().isHeldByAnother());
}

TEST_F(FileLockTest, MovesToTheFileThatItMakesWithoutAGap)
{
    FileLock lock = exclusive();
    ASSERT_TRUE(lock.makeFile());

    EXPECT_TRUE(lock.isHeld());
    EXPECT_TRUE(lock.isAtPath());
    EXPECT_EQ(test::TemporaryFolder::contents(path), "");
    EXPECT_TRUE(exclusive().isHeldByAnother());
    EXPECT_TRUE(FileLock::take(folder.path("other"), LockMode::exclusive, once).isHeld())
        << "the folder is free";
    EXPECT_TRUE(lock.makeFile()) << "there is one";
}

TEST_F(FileLockTest, IsGivenUpWhenSomebodyElseMadeTheFile)
{
    FileLock lock = exclusive();
    folder.write("rules", "of another program");

    EXPECT_FALSE(lock.isAtPath());
    EXPECT_FALSE(lock.makeFile());
    EXPECT_FALSE(lock.isHeld());
    EXPECT_NE(lock.problem(), "");
    EXPECT_EQ(test::TemporaryFolder::contents(path), "of another program");
    EXPECT_TRUE(exclusive().isHeld());
}

TEST_F(FileLockTest, KnowsThatThePathLeadsToAnotherFileNow)
{
    folder.write("rules", "text");
    const FileLock lock = exclusive();
    EXPECT_TRUE(lock.isAtPath());
    std::filesystem::rename(path, folder.path("aside"));
    EXPECT_FALSE(lock.isAtPath());
    folder.write("rules", "text");
    EXPECT_FALSE(lock.isAtPath());
}

TEST_F(FileLockTest, IsOnTheFileThatIsThereInTheEndWhenItWasReplacedMeanwhile)
{
    folder.write("rules", "old");
    FileLock old = exclusive();
    std::thread replacer([&] {
        std::filesystem::rename(folder.write("new", "new"), path);
        old = FileLock();
    });
    const FileLock lock = exclusive(ample);
    replacer.join();

    EXPECT_TRUE(lock.isHeld());
    EXPECT_TRUE(lock.isAtPath());
}

TEST_F(FileLockTest, FailsOnWhatIsNoRegularFile)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::filesystem::create_symlink(folder.write("target", "text"), folder.path("link"));
    const struct {
        std::string path;
        const char* reason;
    } cases[] = {
        {path, "Operation not supported (95)"},
        {"/dev/null", "Operation not supported (95)"},
        {folder.path(), "Is a directory (21)"},
        {folder.path("link"), "Too many levels of symbolic links (40)"},
        {folder.path("none/rules"), "No such file or directory (2)"},
        {folder.path("target/below"), "Not a directory (20)"},
    };
    for (const auto& c : cases) {
        const FileLock lock = FileLock::take(c.path, LockMode::exclusive, ample);
        EXPECT_FALSE(lock.isHeld()) << c.path;
        EXPECT_FALSE(lock.isHeldByAnother()) << c.path;
        EXPECT_EQ(lock.problem(), "Failed to lock file '" + c.path + "': " + c.reason);
    }
}

TEST_F(FileLockTest, OfARelativePathIsTakenInTheWorkingFolder)
{
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    FileLock lock = FileLock::take("rules", LockMode::exclusive, once);
    EXPECT_TRUE(lock.makeFile());
    std::filesystem::current_path(before);
    EXPECT_EQ(files(), 1U);
}

} // namespace quorvane::platform
