#include "codesign/CodeFile.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace quorvane::codesign {

namespace {

// Writes one byte into an existing file.
void writeByteAt(const std::string& path, std::uint64_t offset, char byte)
{
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(offset));
    file.put(byte);
}

} // namespace

TEST(CodeFile, IsZeroWhereNothingElseIsStored)
{
    const test::TemporaryFolder folder;
    constexpr std::uint64_t size = 8ULL << 30U;
    const std::string path = folder.write("file", "x");
    std::filesystem::resize_file(path, size);
    EXPECT_TRUE(CodeFile::open(path)->isZero(1, size - 1)) << "a hole";
    EXPECT_FALSE(CodeFile::open(path)->isZero(0, size)) << "its first byte";
    EXPECT_FALSE(CodeFile::open(path)->isZero(1, size)) << "past the end";
    EXPECT_FALSE(CodeFile::open(path)->isZero(UINT64_MAX, 2)) << "a sum that wraps around";

    constexpr std::uint64_t inside = 5ULL << 30U;
    writeByteAt(path, inside, '\0');
    EXPECT_TRUE(CodeFile::open(path)->isZero(1, size - 1)) << "stored zeros between holes";
    writeByteAt(path, inside, 'y');
    EXPECT_FALSE(CodeFile::open(path)->isZero(1, size - 1));
    EXPECT_TRUE(CodeFile::open(path)->isZero(1, inside - 1)) << "up to it";
    EXPECT_FALSE(CodeFile::open(path)->isZero(1, inside));
    EXPECT_TRUE(CodeFile::open(path)->isZero(inside + 1, size - inside - 1)) << "behind it";
}

TEST(CodeFile, FindsEveryByteThatIsNotZeroInStoredData)
{
    const test::TemporaryFolder folder;
    for (const std::size_t at : {0U, 1U, 4095U, 262143U, 262144U, 299999U}) {
        std::string contents(300000, '\0');
        const std::string zeros = folder.write("zeros", contents);
        contents[at] = 1;
        EXPECT_TRUE(CodeFile::open(zeros)->isZero(0, contents.size()));
        EXPECT_FALSE(CodeFile::open(folder.write("file", contents))->isZero(0, contents.size())) << at;
    }
}

TEST(CodeFile, HasFailedOnlyWhenItHoldsLessThanItsSize)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", "0123456789");
    const auto file = CodeFile::open(path);
    Bytes to(10);
    EXPECT_EQ(file->read(5, to.data(), 10), ReadResult::cutShort);
    EXPECT_FALSE(file->bytes(5, 10, 10)) << "more than it holds";
    EXPECT_FALSE(file->hasFailed());

    std::filesystem::resize_file(path, 5);
    EXPECT_TRUE(file->bytes(0, 5, 5));
    EXPECT_FALSE(file->hasFailed());
    EXPECT_FALSE(file->bytes(0, 10, 10));
    EXPECT_TRUE(file->hasFailed()) << "it has shrunk";
}

TEST(CodeFile, GivesBytesThatItHoldsAndThatAreNotTooMany)
{
    const test::TemporaryFolder folder;
    const auto file = CodeFile::open(folder.write("file", "0123456789"));
    EXPECT_EQ(file->bytes(0, 10, 10), test::bytesOf("0123456789"));
    EXPECT_EQ(file->bytes(7, 3, 3), test::bytesOf("789"));
    EXPECT_FALSE(file->bytes(0, 6, 5)) << "more than asked for at most";
    EXPECT_EQ(file->bytes(10, 0, 5), Bytes()) << "at its end";
    EXPECT_FALSE(file->bytes(11, 0, 5)) << "behind its end";
    EXPECT_FALSE(file->bytes(UINT64_MAX, 2, 5)) << "a sum that wraps around";
}

TEST(CodeFile, EndsBeforeWhatNoFileReaches)
{
    const test::TemporaryFolder folder;
    const auto file = CodeFile::open(folder.write("file", "0123456789"));
    Bytes to(10);
    for (const std::uint64_t offset :
        {std::uint64_t{INT64_MAX} - 5, std::uint64_t{INT64_MAX} + 1, UINT64_MAX})
        EXPECT_EQ(file->read(offset, to.data(), to.size()), ReadResult::cutShort) << offset;
    EXPECT_FALSE(file->hasFailed());
}

TEST(CodeFile, IsReadNoFurtherThanWanted)
{
    const test::TemporaryFolder folder;
    const auto file = CodeFile::open(folder.write("file", std::string(600000, 'x')));
    int pieces = 0;
    const auto once = [&pieces](ByteView) {
        ++pieces;
        return false;
    };
    EXPECT_EQ(file->forEachPieceToEnd(once), ReadResult::complete);
    EXPECT_EQ(pieces, 1);
    EXPECT_EQ(file->forEachPiece(0, 600000, once), ReadResult::complete);
    EXPECT_EQ(pieces, 2);
}

TEST(CodeFile, IsAnotherThanOneOfItsNumberOnAnotherDevice)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    std::filesystem::create_hard_link(path, folder.path("same"));
    EXPECT_TRUE(CodeFile::open(path)->isSameFileAs(*CodeFile::open(folder.path("same"))));
    EXPECT_FALSE(CodeFile::open(path)->isSameFileAs(*CodeFile::open(folder.write("other", "x"))));

    // Two new file systems number their files alike.
    std::filesystem::create_directory(folder.path("a"));
    std::filesystem::create_directory(folder.path("b"));
    const std::string answer = test::answerOfChild([&folder]() -> std::string {
        if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || mount("none", folder.path("a").c_str(), "tmpfs", 0, nullptr) != 0
            || mount("none", folder.path("b").c_str(), "tmpfs", 0, nullptr) != 0)
            return "no mounts";
        const auto one = CodeFile::open(folder.write("a/file", "x"));
        const auto other = CodeFile::open(folder.write("b/file", "x"));
        struct stat first { };
        struct stat second { };
        stat(folder.path("a/file").c_str(), &first);
        stat(folder.path("b/file").c_str(), &second);
        if (first.st_ino != second.st_ino)
            return "other numbers";
        return one->isSameFileAs(*other) ? "the same" : "another";
    });
    if (answer == "no mounts" || answer == "other numbers")
        GTEST_SKIP() << answer;
    EXPECT_EQ(answer, "another");
}

TEST(CodeFile, IsReadToItsEndWhateverItsSizeSays)
{
    const auto file = CodeFile::open("/proc/version");
    ASSERT_TRUE(file);
    ASSERT_EQ(file->size(), 0U);
    std::string read;
    const auto result = file->forEachPieceToEnd([&read](ByteView piece) {
        read += piece.text();
        return true;
    });
    EXPECT_EQ(result, ReadResult::complete);
    EXPECT_EQ(read, test::TemporaryFolder::contents("/proc/version"));
    EXPECT_NE(read, "");
}

} // namespace quorvane::codesign
