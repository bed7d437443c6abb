#include "platform/FileIdentity.h"

#include "platform/RegularFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::platform {

namespace {

FileIdentity identityOf(const std::string& path)
{
    std::error_code error;
    const auto identity = FileIdentity::ofPath(path, error);
    EXPECT_TRUE(identity) << path << ": " << error.message();
    return identity.value_or(FileIdentity());
}

// Sets the modification time, like a program that copies files.
void setModified(const std::string& path, long nanoseconds)
{
    const timespec times[2]{{0, UTIME_OMIT}, {1000, nanoseconds}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

} // namespace

TEST(FileIdentity, IsTheSameByPathAndDescriptor)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", "text");
    std::error_code error;
    const FileDescriptor file = openRegularFile(path, O_RDONLY, error);

    EXPECT_EQ(FileIdentity::ofDescriptor(file.get(), error), identityOf(path));
    EXPECT_EQ(identityOf(path).size, 4);
    EXPECT_FALSE(identityOf(path).isMissing());
}

TEST(FileIdentity, OfAnotherFileDiffers)
{
    const test::TemporaryFolder folder;
    const FileIdentity first = identityOf(folder.write("first", "text"));
    const FileIdentity second = identityOf(folder.write("second", "text"));

    EXPECT_NE(first, second);
    EXPECT_FALSE(first.isSameFileAs(second));
}

TEST(FileIdentity, DiffersAfterAChangeOfSizeAndOfEitherTimeToTheNanosecond)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", "text");
    const FileIdentity before = identityOf(path);
    setModified(path, 1);
    const FileIdentity one = identityOf(path);
    setModified(path, 2);
    const FileIdentity two = identityOf(path);
    folder.write("file", "longer text");
    const FileIdentity longer = identityOf(path);

    EXPECT_EQ(one.modified, 1'000'000'000'001);
    EXPECT_NE(before, one);
    EXPECT_NE(one, two);
    EXPECT_NE(two, longer);
    EXPECT_TRUE(before.isSameFileAs(longer));
    FileIdentity otherChange = longer;
    ++otherChange.changed;
    EXPECT_NE(otherChange, longer);
}

TEST(FileIdentity, OfALinkIsTheLinksOwn)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", "text");
    std::filesystem::create_symlink(path, folder.path("link"));

    EXPECT_NE(identityOf(folder.path("link")), identityOf(path));
}

TEST(FileIdentity, OfNothingIsMissingAndNoError)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("file", "text");

    for (const std::string& path :
        {folder.path("none"), folder.path("none/file"), file + "/below", std::string()})
        EXPECT_EQ(identityOf(path), FileIdentity::missing()) << path;
    EXPECT_TRUE(FileIdentity::missing().isMissing());
}

TEST(FileIdentity, ThatCannotBeToldIsAnErrorAndNotMissing)
{
    const test::TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const std::string closed = folder.write("closed/file", "text");
    std::filesystem::permissions(folder.path("closed"), std::filesystem::perms::none);
    std::filesystem::create_symlink(folder.path("loop"), folder.path("loop"));
    const auto errorAt = [](const std::string& path) {
        std::error_code error;
        return FileIdentity::ofPath(path, error) ? 0 : error.value();
    };

    EXPECT_EQ(errorAt(folder.path("loop/file")), ELOOP);
    EXPECT_EQ(errorAt(folder.path(std::string(300, 'x'))), ENAMETOOLONG);
    EXPECT_EQ(errorAt(folder.path() + std::string(1, char()) + "more"), EINVAL)
        << "no name holds a zero byte";
    EXPECT_EQ(test::answerOfChild([&] {
        return test::becomeOrdinaryUser() ? std::to_string(errorAt(closed)) : std::string("still root");
    }),
        std::to_string(EACCES));
    std::error_code error;
    EXPECT_FALSE(FileIdentity::ofDescriptor(-1, error));
    EXPECT_EQ(error.value(), EBADF);
}

} // namespace quorvane::platform
