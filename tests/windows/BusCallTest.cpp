#include "desktop/BusCall.h"

#include "platform/FileDescriptor.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

namespace quorvane::windows {

namespace {

constexpr std::chrono::seconds untilConnected{20};

} // namespace

TEST(BusConnection, IsAnotherThanThoseThatThereAre)
{
    const test::PrivateBus bus;
    const desktop::BusConnection one(bus.address(), untilConnected);
    auto other = std::make_unique<desktop::BusConnection>(bus.address(), untilConnected);
    ASSERT_TRUE(one.bus().isConnected());
    EXPECT_NE(one.bus().baseService(), other->bus().baseService());
    other.reset();
    EXPECT_TRUE(one.bus().isConnected());
}

TEST(BusConnection, ToABusThatIsNotThereIsNotConnected)
{
    const desktop::BusConnection connection("unix:path=/nonexistent/bus", untilConnected);
    EXPECT_FALSE(connection.bus().isConnected());
}

TEST(BusConnection, DoesNotWaitForABusThatSaysNothing)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("bus");
    const platform::FileDescriptor silent(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(silent.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(silent.get(), 1), 0);
    const desktop::BusConnection connection("unix:path=" + path, std::chrono::milliseconds(50));
    EXPECT_FALSE(connection.bus().isConnected());
}

} // namespace quorvane::windows
