#include "platform/FileDescriptor.h"

#include <gtest/gtest.h>

#include <utility>

#include <fcntl.h>

namespace quorvane::platform {

namespace {

bool isOpen(int descriptor)
{
    return fcntl(descriptor, F_GETFD) != -1;
}

int anyDescriptor()
{
    return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

} // namespace

TEST(FileDescriptor, ClosesWhatItOwns)
{
    const int number = anyDescriptor();
    {
        const FileDescriptor owner(number);
        EXPECT_TRUE(owner);
        EXPECT_EQ(owner.get(), number);
        EXPECT_TRUE(isOpen(number));
    }

    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptor, ReleasedOneStaysOpen)
{
    const int number = anyDescriptor();
    {
        FileDescriptor owner(number);
        EXPECT_EQ(owner.release(), number);
        EXPECT_FALSE(owner);
    }

    EXPECT_TRUE(isOpen(number));
    close(number);
}

TEST(FileDescriptor, MovingHandsTheDescriptorOver)
{
    const int number = anyDescriptor();
    FileDescriptor second;
    {
        FileDescriptor first(number);
        second = FileDescriptor(std::move(first));
    }

    EXPECT_EQ(second.get(), number);
    EXPECT_TRUE(isOpen(number));
}

TEST(FileDescriptor, DescriptorZeroIsOneAndNegativeIsNone)
{
    FileDescriptor zero(0);

    EXPECT_TRUE(zero);
    EXPECT_FALSE(FileDescriptor(-1));
    zero.release();
}

} // namespace quorvane::platform
