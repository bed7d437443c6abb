#include "desktop/BusCall.h"

#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

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

} // namespace quorvane::windows
