#include "codesign/Digests.h"
#include "codesign/ProtectedPath.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

#include <sys/stat.h>

namespace quorvane::codesign {

namespace {

constexpr const char* emptySha1 = "da39a3ee5e6b4b0d3255bfef95601890afd80709";
constexpr const char* emptySha256 = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

} // namespace

TEST(Digests, OfAnEmptyBufferAreThoseOfEmptyInput)
{
    EXPECT_EQ(sha1(""), emptySha1);
    EXPECT_EQ(sha256(""), emptySha256);
    EXPECT_EQ(sha1(std::string_view()), emptySha1);
    EXPECT_EQ(sha256(std::string_view()), emptySha256);
}

TEST(Digests, AreLowercaseDigitsWithLeadingZeros)
{
    EXPECT_EQ(sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Digests, OfAFileEqualThoseOfItsBytesWhateverItsLength)
{
    const test::TemporaryFolder folder;
    for (const std::size_t length :
        {0U, 1U, 511U * 1024U, 512U * 1024U, 512U * 1024U + 1U, 3U * 1024U * 1024U}) {
        std::string contents(length, 'x');
        if (!contents.empty())
            contents.back() = 'y';
        const std::string path = folder.write("file", contents);

        EXPECT_EQ(sha1OfFile(path), sha1(contents)) << length;
        EXPECT_EQ(sha256OfFile(path), sha256(contents)) << length;
    }
}

TEST(Digests, OfAFileAreReadBelowItsRoot)
{
    const test::TemporaryFolder folder;
    folder.write("below/file", "abc");
    std::error_code error;
    const auto root = platform::FileRoot::at(folder.path("below"), error);
    EXPECT_EQ(sha1OfFile("/file", *root), sha1("abc"));
    EXPECT_EQ(sha256OfFile("/file", *root), sha256("abc"));
}

TEST(Digests, OfOneFileCanBeHadAtOnce)
{
    const test::TemporaryFolder folder;
    const auto both = digestsOfFile(folder.write("file", "abc"));
    ASSERT_TRUE(both);
    EXPECT_EQ(both->sha1, sha1("abc"));
    EXPECT_EQ(both->sha256, sha256("abc"));
    EXPECT_FALSE(digestsOfFile(folder.path("missing")));
}

TEST(Digests, OfWhatIsNoReadableFileAreNoneAndNeverBlock)
{
    const test::TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);

    EXPECT_FALSE(sha256OfFile(pipe));
    EXPECT_FALSE(sha256OfFile(folder.path("missing")));
    EXPECT_FALSE(sha256OfFile(folder.path("")));
    EXPECT_FALSE(sha1OfFile("/dev/zero"));
}

TEST(IsSIP, IsTrueForTheFoldersOfTheOperatingSystemOnly)
{
    const struct {
        const char* path;
        bool isProtected;
    } cases[] = {
        {"/System/Library/x", true},
        {"/usr/bin/ssh", true},
        {"/bin/ls", true},
        {"/sbin/mount", true},
        {"/usr/localx", true},
        {"/usr/local", true},
        {"/usr/local/bin/x", false},
        {"/usr/local/", false},
        {"/usr", false},
        {"/System", false},
        {"/Applications/Mail.app/Contents/MacOS/Mail", false},
        {"/private/tmp/x", false},
        {"/system/x", false},
        {"usr/bin/x", false},
        {"", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(isSIP(c.path), c.isProtected) << c.path;
}

} // namespace quorvane::codesign
