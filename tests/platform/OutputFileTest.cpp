#include "platform/OutputFile.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>

namespace quorvane::platform {

namespace {

namespace fs = std::filesystem;

struct stat statusOf(const std::string& path)
{
    struct stat status { };
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status;
}

class OutputFile : public testing::Test {
protected:
    std::size_t files() const
    {
        const fs::directory_iterator all(folder.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    const test::TemporaryFolder folder;
    const std::string path = folder.path("out");
};

} // namespace

TEST_F(OutputFile, NewOneIsForOwnerAndGroupAlone)
{
    const mode_t usual = umask(0);
    EXPECT_FALSE(writeOutputFile(path, "text"));
    umask(usual);
    EXPECT_EQ(test::TemporaryFolder::contents(path), "text");
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 0640U);
}

TEST_F(OutputFile, IsReplacedByALongerAndByAShorterOne)
{
    for (const std::string text : {"first", "a longer second", "3", ""}) {
        EXPECT_FALSE(writeOutputFile(path, text));
        EXPECT_EQ(test::TemporaryFolder::contents(path), text);
        EXPECT_EQ(files(), 1U);
    }
}

TEST_F(OutputFile, KeepsItsPermissionBits)
{
    folder.write("out", "old");
    for (const mode_t bits : {0600U, 0644U, 0755U}) {
        ASSERT_EQ(chmod(path.c_str(), bits), 0);
        EXPECT_FALSE(writeOutputFile(path, "new"));
        EXPECT_EQ(statusOf(path).st_mode & 07777U, bits);
    }
}

TEST_F(OutputFile, IsWrittenInPlaceWhenItHasAnotherName)
{
    folder.write("out", "old and longer");
    fs::create_hard_link(path, folder.path("other"));
    EXPECT_FALSE(writeOutputFile(path, "new"));
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("other")), "new");
    EXPECT_EQ(statusOf(path).st_nlink, 2U);
}

TEST_F(OutputFile, IsWrittenInPlaceInAFolderThatPermitsNoNewFile)
{
    folder.write("out", "old and longer");
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EQ(test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still privileged");
        const auto existing = writeOutputFile(path, "new");
        return existing.message() + ", " + writeOutputFile(folder.path("another"), "text").message();
    }),
        "Success, Permission denied");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(test::TemporaryFolder::contents(path), "new");
    EXPECT_EQ(files(), 1U);
}

TEST_F(OutputFile, BehindALinkIsRefusedAndLeftAlone)
{
    const std::string target = folder.write("target", "old");
    fs::create_symlink(target, path);
    EXPECT_EQ(writeOutputFile(path, "new"), std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(test::TemporaryFolder::contents(target), "old");
    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(OutputFile, ThatIsNoRegularFileIsRefused)
{
    fs::create_directory(path);
    EXPECT_TRUE(writeOutputFile(path, "new"));
    EXPECT_TRUE(writeOutputFile("/dev/null", "new"));
    EXPECT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(writeOutputFile(folder.path("pipe"), "new"));
    EXPECT_EQ(writeOutputFile(folder.path("missing/out"), "new"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(files(), 2U);
}

TEST_F(OutputFile, ThatCannotBeWrittenWholeKeepsItsContents)
{
    folder.write("out", "old");
    const std::string answer = test::answerOfChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{4096, 4096};
        if (setrlimit(RLIMIT_FSIZE, &small) != 0)
            return std::string("no limit");
        return writeOutputFile(path, std::string(10000, 'x')).message();
    });
    EXPECT_EQ(answer, "File too large");
    EXPECT_EQ(test::TemporaryFolder::contents(path), "old");
    EXPECT_EQ(files(), 1U);
}

} // namespace quorvane::platform
