#include "platform/StandardStreams.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

std::string outcome(ssize_t written)
{
    return written < 0 ? strerrorname_np(errno) : std::to_string(written);
}

} // namespace

TEST(StandardStreams, AFileNeverTakesThePlaceOfAClosedOutput)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("rules", "old");
    for (const int closed : {STDOUT_FILENO, STDERR_FILENO}) {
        const std::string answer = test::answerOfChild([&] {
            close(closed);
            secureStandardStreams();
            const int file = open(path.c_str(), O_WRONLY);
            return (file > STDERR_FILENO ? "behind them, " : "in their place, ")
                + outcome(write(closed, "text", 4));
        });
        EXPECT_EQ(answer, "behind them, EBADF");
        EXPECT_EQ(test::TemporaryFolder::contents(path), "old");
    }
}

TEST(StandardStreams, ThatAreOpenStayAsTheyAre)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("output");
    test::answerOfChild([&] {
        dup2(open(path.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
        secureStandardStreams();
        return outcome(write(STDOUT_FILENO, "text", 4));
    });
    EXPECT_EQ(test::TemporaryFolder::contents(path), "text");
}

TEST(StandardStreams, AClosedInputIsLeftClosed)
{
    EXPECT_EQ(test::answerOfChild([] {
        close(STDIN_FILENO);
        secureStandardStreams();
        return std::string(fcntl(STDIN_FILENO, F_GETFD) < 0 ? "closed" : "open");
    }),
        "closed");
}

TEST(StandardStreams, AWriteThatNobodyCanTakeIsAnErrorAndNotTheEnd)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(test::answerOfChild([&] {
        secureStandardStreams();
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0)
            return std::string("no pipe");
        close(ends[0]);
        const std::string toNobody = outcome(write(ends[1], "text", 4));
        const int file = open(folder.path("file").c_str(), O_WRONLY | O_CREAT, 0600);
        const rlimit none{0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        return toNobody + ", " + outcome(write(file, "text", 4));
    }),
        "EPIPE, EFBIG");
}

} // namespace quorvane::platform
