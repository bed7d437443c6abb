#include "platform/FileBytes.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace quorvane::platform {

namespace {

constexpr std::size_t limit = 100;

} // namespace

TEST(ReadSmallFile, GivesAllBytesOfAFileUpToTheLimit)
{
    const test::TemporaryFolder folder;
    const std::string withNul("a\0b\n\xFF", 5);
    const std::string full(limit, 'x');

    EXPECT_EQ(readSmallFile(folder.write("bytes", withNul), limit), withNul);
    EXPECT_EQ(readSmallFile(folder.write("full", full), limit), full);
    EXPECT_EQ(readSmallFile(folder.write("empty", ""), limit), "");
}

TEST(ReadSmallFile, GivesNothingOfAFileBeyondTheLimit)
{
    const test::TemporaryFolder folder;

    EXPECT_FALSE(readSmallFile(folder.write("large", std::string(limit + 1, 'x')), limit));
}

TEST(ReadSmallFile, GivesNothingOfWhatIsNoRegularFile)
{
    const test::TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);

    EXPECT_FALSE(readSmallFile(folder.path(), limit)) << "a folder";
    EXPECT_FALSE(readSmallFile(folder.path("pipe"), limit)) << "a pipe, which must not block either";
    EXPECT_FALSE(readSmallFile("/dev/null", limit)) << "a device";
    EXPECT_FALSE(readSmallFile(folder.path("missing"), limit)) << "nothing at all";
    EXPECT_FALSE(readSmallFile("", limit)) << "no path";
}

TEST(ReadSmallFile, FollowsASymbolicLink)
{
    const test::TemporaryFolder folder;
    std::filesystem::create_symlink(folder.write("target", "text"), folder.path("link"));

    EXPECT_EQ(readSmallFile(folder.path("link"), limit), "text");
}

TEST(ReadSmallFile, GivesNothingOfAnUnreadableFile)
{
    const test::TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const std::string file = folder.write("secret", "text");
    std::filesystem::permissions(file, std::filesystem::perms::none);

    const std::string answer = test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        return readSmallFile(file, limit).value_or("none");
    });

    EXPECT_EQ(answer, "none");
}

TEST(IsAnythingAt, KnowsFilesFoldersAndWhatLinksLeadTo)
{
    const test::TemporaryFolder folder;
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

TEST(IsFolderAt, KnowsFoldersAndLinksToThem)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("file", "text");
    std::filesystem::create_directory_symlink(folder.path(), folder.path("link"));

    EXPECT_TRUE(isFolderAt(folder.path()));
    EXPECT_TRUE(isFolderAt(folder.path() + "/"));
    EXPECT_TRUE(isFolderAt(folder.path("link")));
    EXPECT_FALSE(isFolderAt(file));
    EXPECT_FALSE(isFolderAt(folder.path("missing")));
    EXPECT_FALSE(isFolderAt(folder.path() + std::string(1, char()) + "more"));
}

TEST(IsTextAt, TakesUtf8TextOfAnyLength)
{
    const test::TemporaryFolder folder;
    const std::string withNul("a\0b", 3);
    for (const std::string& text : {std::string(), std::string("a"), std::string("héllo 日本 😀"), withNul})
        EXPECT_TRUE(isTextAt(folder.write("file", text))) << text;
    std::filesystem::create_symlink(folder.write("target", "text"), folder.path("link"));
    EXPECT_TRUE(isTextAt(folder.path("link")));
}

TEST(IsTextAt, RefusesWhatIsNoUtf8)
{
    const test::TemporaryFolder folder;
    for (const char* text : {"\xFF", "abc\xC3", "\xC3(", "\x80", "\x80\x80\x80\x80\x80", "\xED\xA0\x80",
             "\xF0\x9F\x98", "\xC0\xAF", "a\xE6\x97"})
        EXPECT_FALSE(isTextAt(folder.write("file", text)));
}

TEST(IsTextAt, CharactersMayLieAcrossThePiecesOfAReading)
{
    const test::TemporaryFolder folder;
    constexpr std::size_t pieceSize = 1U << 20U;
    for (const std::string character : {"é", "日", "😀"}) {
        for (std::size_t before = 0; before <= character.size(); ++before) {
            const std::string start(pieceSize - before, 'x');
            EXPECT_TRUE(isTextAt(folder.write("file", start + character + "rest")));
            EXPECT_TRUE(isTextAt(folder.write("file", start + character)));
            EXPECT_FALSE(isTextAt(folder.write("file", start + character.substr(0, character.size() - 1))));
            EXPECT_FALSE(isTextAt(folder.write("file", start + character.substr(0, 1) + "rest")));
        }
    }
    std::string many;
    for (int number = 0; number < 700000; ++number)
        many += "日";
    EXPECT_TRUE(isTextAt(folder.write("file", many)));
    many[many.size() - 5] = 'x';
    EXPECT_FALSE(isTextAt(folder.write("file", many)));
}

TEST(IsTextAt, RefusesWhatIsNoReadableFile)
{
    const test::TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);

    EXPECT_FALSE(isTextAt(folder.path())) << "a folder";
    EXPECT_FALSE(isTextAt(folder.path("pipe"))) << "a pipe, which must not block either";
    EXPECT_FALSE(isTextAt("/dev/zero")) << "a device";
    EXPECT_FALSE(isTextAt(folder.path("missing")));
    EXPECT_FALSE(isTextAt(""));
}

TEST(IsTextAt, RefusesAFileThatNoMemoryHolds)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("huge", "");
    std::filesystem::resize_file(file, std::uintmax_t{1} << 42U); // a hole

    EXPECT_FALSE(isTextAt(file));
}

} // namespace quorvane::platform
