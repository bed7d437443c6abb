#include "platform/RegularFile.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::platform {

namespace {

int errorOfOpening(const std::string& path, int flags)
{
    std::error_code error;
    const FileDescriptor file = openRegularFile(path, flags, error);
    EXPECT_EQ(static_cast<bool>(file), !error) << path;
    return error.value();
}

// Both ends of a pipe, whose calls block and so can be interrupted.
struct Pipe {
    Pipe()
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        out = FileDescriptor(ends[0]);
        in = FileDescriptor(ends[1]);
    }
    FileDescriptor out;
    FileDescriptor in;
};

} // namespace

TEST(OpenRegularFile, RefusesAtOnceWhatIsNone)
{
    const test::TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_symlink(pipe, folder.path("link"));

    for (const int flags : {O_RDONLY, O_WRONLY, O_WRONLY | O_CREAT}) {
        EXPECT_EQ(errorOfOpening(pipe, flags), ENOTSUP) << flags;
        EXPECT_EQ(errorOfOpening(folder.path("link"), flags), ENOTSUP) << flags;
        EXPECT_EQ(errorOfOpening("/dev/null", flags), ENOTSUP) << flags;
        EXPECT_EQ(errorOfOpening(folder.path(), flags), EISDIR) << flags;
    }
}

TEST(OpenRegularFile, FollowsALinkUnlessToldNotTo)
{
    const test::TemporaryFolder folder;
    std::filesystem::create_symlink(folder.write("file", "text"), folder.path("link"));

    EXPECT_EQ(errorOfOpening(folder.path("link"), O_RDONLY), 0);
    EXPECT_EQ(errorOfOpening(folder.path("link"), O_RDONLY | O_NOFOLLOW), ELOOP);
}

TEST(OpenRegularFile, SaysWhyThereIsNone)
{
    const test::TemporaryFolder folder;

    EXPECT_EQ(errorOfOpening(folder.path("none"), O_RDONLY), ENOENT);
    EXPECT_EQ(errorOfOpening("", O_RDONLY), ENOENT);
    EXPECT_EQ(errorOfOpening(folder.write("file", "text") + "/below", O_RDONLY), ENOTDIR);
    EXPECT_EQ(errorOfOpening(folder.path("file") + std::string(1, char()) + "more", O_RDONLY), EINVAL);
}

TEST(OpenRegularFile, MakesAFileWithThePermissionsGiven)
{
    const test::TemporaryFolder folder;
    std::error_code error;
    const FileDescriptor file = openRegularFile(folder.path("new"), O_WRONLY | O_CREAT | O_EXCL, error, 0600);
    struct stat status { };
    ASSERT_EQ(fstat(file.get(), &status), 0);

    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(errorOfOpening(folder.path("new"), O_WRONLY | O_CREAT | O_EXCL), EEXIST);
}

TEST(ReadFully, StopsAtTheEndOrAtAnError)
{
    const test::TemporaryFolder folder;
    std::error_code error;
    const FileDescriptor file = openRegularFile(folder.write("file", "text"), O_RDONLY, error);
    char bytes[10] = {};

    EXPECT_EQ(readFully(file.get(), bytes, sizeof bytes, error), 4U);
    EXPECT_FALSE(error);
    EXPECT_STREQ(bytes, "text");
    EXPECT_EQ(readFully(-1, bytes, sizeof bytes, error), 0U);
    EXPECT_EQ(error.value(), EBADF);
}

TEST(ReadFully, ForgetsTheErrorOfAnEarlierCallAsWriteFullyDoes)
{
    const Pipe pipe;
    std::error_code error;
    char byte = 'x';

    ASSERT_EQ(writeFully(-1, "x", error), 0U);
    ASSERT_TRUE(error);
    EXPECT_EQ(writeFully(pipe.in.get(), "x", error), 1U);
    EXPECT_FALSE(error);

    ASSERT_EQ(readFully(-1, &byte, 1, error), 0U);
    ASSERT_TRUE(error);
    EXPECT_EQ(readFully(pipe.out.get(), &byte, 1, error), 1U);
    EXPECT_FALSE(error);
}

TEST(ReadFully, GoesOnAfterASignalAndAfterAPiece)
{
    struct sigaction handler { };
    struct sigaction before { };
    handler.sa_handler = [](int) {}; // without SA_RESTART
    ASSERT_EQ(sigaction(SIGUSR1, &handler, &before), 0);
    const Pipe pipe;
    const pthread_t reader = pthread_self();
    std::thread writer([&] {
        for (const char* piece : {"a", "b", "c"}) {
            pthread_kill(reader, SIGUSR1);
            EXPECT_EQ(write(pipe.in.get(), piece, 1), 1);
        }
    });
    char bytes[4] = {};
    std::error_code error;
    EXPECT_EQ(readFully(pipe.out.get(), bytes, 3, error), 3U);
    EXPECT_FALSE(error);
    EXPECT_STREQ(bytes, "abc");
    writer.join();
    sigaction(SIGUSR1, &before, nullptr);
}

TEST(HoldsExactly, IsTrueOfAllBytesUpToTheEndAlone)
{
    const test::TemporaryFolder folder;
    std::string text((std::size_t{256} << 10U) + 5, 'x'); // more than one chunk
    const std::string path = folder.write("file", text);
    const auto holds = [&path](const std::string& bytes) {
        std::error_code error;
        return holdsExactly(openRegularFile(path, O_RDONLY, error).get(), bytes);
    };

    EXPECT_TRUE(holds(text));
    EXPECT_FALSE(holds(text + "x"));
    EXPECT_FALSE(holds(text.substr(1)));
    EXPECT_FALSE(holds(text.substr(0, std::size_t{256} << 10U)));
    EXPECT_FALSE(holds(""));
    text.back() = 'y';
    EXPECT_FALSE(holds(text));
}

TEST(HoldsExactly, IsFalseOfWhatCannotBeRead)
{
    EXPECT_FALSE(holdsExactly(-1, ""));
}

TEST(WriteFully, SaysHowMuchWasWrittenBeforeAnError)
{
    const Pipe pipe;
    std::error_code error;
    EXPECT_EQ(writeFully(pipe.in.get(), "text", error), 4U);
    EXPECT_FALSE(error);

    ASSERT_EQ(fcntl(pipe.in.get(), F_SETFL, O_NONBLOCK), 0);
    const std::string large(1U << 22U, 'x');
    const std::size_t written = writeFully(pipe.in.get(), large, error);
    EXPECT_GT(written, 0U);
    EXPECT_LT(written, large.size());
    EXPECT_EQ(error.value(), EAGAIN);
}

} // namespace quorvane::platform
