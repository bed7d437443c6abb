#include "platform/FileReplacement.h"

#include "platform/RegularFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <sys/stat.h>

namespace quorvane::platform {

namespace {

class FileReplacementTest : public testing::Test {
protected:
    std::size_t files() const
    {
        const std::filesystem::directory_iterator all(folder.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
    static void write(const FileReplacement& file, std::string_view text)
    {
        std::error_code error;
        ASSERT_EQ(writeFully(file.descriptor(), text, error), text.size());
    }

    const test::TemporaryFolder folder;
    const std::string path = folder.path("file");
};

} // namespace

TEST_F(FileReplacementTest, TakesThePlaceOnlyWhenItIsComplete)
{
    folder.write("file", "old");
    FileReplacement file(path);
    write(file, "new");
    EXPECT_EQ(test::TemporaryFolder::contents(path), "old");

    EXPECT_FALSE(file.takePlace(0640));
    EXPECT_EQ(test::TemporaryFolder::contents(path), "new");
    struct stat status { };
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(files(), 1U);
}

TEST_F(FileReplacementTest, LeavesTheOldFileAndNothingElseWhenItIsGivenUp)
{
    folder.write("file", "old");
    {
        const FileReplacement file(path);
        write(file, "half");
        EXPECT_EQ(files(), 2U);
    }
    EXPECT_EQ(files(), 1U);
    EXPECT_EQ(test::TemporaryFolder::contents(path), "old");
}

TEST_F(FileReplacementTest, LeavesWhatIsThereWhenItCannotTakeThePlace)
{
    folder.write("file/inside", "text");
    {
        FileReplacement file(path);
        EXPECT_EQ(file.takePlace(0640).value(), EISDIR);
    }
    EXPECT_EQ(test::TemporaryFolder::contents(path + "/inside"), "text");
    EXPECT_EQ(files(), 1U);
}

TEST_F(FileReplacementTest, OfALongNameCanBeMade)
{
    const std::string name(255, 'x');
    FileReplacement file(folder.path(name));
    EXPECT_FALSE(file.takePlace(0640));
    EXPECT_TRUE(std::filesystem::exists(folder.path(name)));
}

TEST_F(FileReplacementTest, SaysWhyItCannotBeMade)
{
    const FileReplacement file(folder.path("none/file"));
    EXPECT_EQ(file.error().value(), ENOENT);
    EXPECT_FALSE(file.isForbidden());
    EXPECT_LT(file.descriptor(), 0);

    EXPECT_EQ(test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        return std::string(FileReplacement("/etc/file").isForbidden() ? "forbidden" : "allowed");
    }),
        "forbidden");
}

} // namespace quorvane::platform
