#include "platform/FileBytes.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace quorvane {

namespace {

constexpr std::size_t limit = 100;

} // namespace

TEST(ReadSmallFile, GivesAllBytesOfAFileUpToTheLimit)
{
    const TemporaryFolder folder;
    const std::string withNul("a\0b\n\xFF", 5);
    const std::string full(limit, 'x');

    EXPECT_EQ(readSmallFile(folder.write("bytes", withNul), limit), withNul);
    EXPECT_EQ(readSmallFile(folder.write("full", full), limit), full);
    EXPECT_EQ(readSmallFile(folder.write("empty", ""), limit), "");
}

TEST(ReadSmallFile, GivesNothingOfAFileBeyondTheLimit)
{
    const TemporaryFolder folder;

    EXPECT_FALSE(readSmallFile(folder.write("large", std::string(limit + 1, 'x')), limit));
}

TEST(ReadSmallFile, GivesNothingOfWhatIsNoRegularFile)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);

    EXPECT_FALSE(readSmallFile(folder.path(), limit)) << "a folder";
    EXPECT_FALSE(readSmallFile(folder.path("pipe"), limit)) << "a pipe, which must not block either";
    EXPECT_FALSE(readSmallFile("/dev/null", limit)) << "a device";
    EXPECT_FALSE(readSmallFile(folder.path("missing"), limit)) << "nothing at all";
    EXPECT_FALSE(readSmallFile("", limit)) << "no path";
}

TEST(ReadSmallFile, FollowsASymbolicLink)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.write("target", "text"), folder.path("link"));

    EXPECT_EQ(readSmallFile(folder.path("link"), limit), "text");
}

TEST(ReadSmallFile, GivesNothingOfAnUnreadableFile)
{
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const std::string file = folder.write("secret", "text");
    std::filesystem::permissions(file, std::filesystem::perms::none);

    const std::string answer = answerOfChild([&] {
        if (!becomeOrdinaryUser())
            return std::string("still root");
        return readSmallFile(file, limit).value_or("none");
    });

    EXPECT_EQ(answer, "none");
}

TEST(IsAnythingAt, KnowsFilesFoldersAndWhatLinksLeadTo)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "text");
    std::filesystem::create_symlink(file, folder.path("link"));
    std::filesystem::create_symlink(folder.path("nowhere"), folder.path("broken"));

    EXPECT_TRUE(isAnythingAt(file));
    EXPECT_TRUE(isAnythingAt(folder.path()));
    EXPECT_TRUE(isAnythingAt(folder.path("link")));
    EXPECT_FALSE(isAnythingAt(folder.path("broken")));
    EXPECT_FALSE(isAnythingAt(folder.path("missing")));
    EXPECT_FALSE(isAnythingAt(file + "/below"));
    EXPECT_FALSE(isAnythingAt(file + std::string(1, char()) + "more")) << "no name holds a zero byte";
    EXPECT_FALSE(isAnythingAt(""));
}

} // namespace quorvane
