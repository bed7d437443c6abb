#include "app/Surroundings.h"

#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(Surroundings, NameTheVolumeThatTheRulesAreFor)
{
    const test::EnvironmentVariable none("QUORVANE_TARGET", std::nullopt);
    EXPECT_EQ(app::volumeFromEnvironment(), "");
    const test::EnvironmentVariable volume("QUORVANE_TARGET", "/media/disk");
    EXPECT_EQ(app::volumeFromEnvironment(), "/media/disk");
}

} // namespace quorvane::windows
