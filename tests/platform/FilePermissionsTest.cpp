#include "platform/FilePermissions.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

namespace quorvane::platform {

TEST(FilePermissions, AreReadAsTheyWereSet)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("file", "");
    for (const std::uint32_t permissions : {0600U, 0775U, 0777U, 01777U, 0U}) {
        EXPECT_TRUE(setPermissions(file, permissions));
        EXPECT_EQ(permissionsOf(file), permissions);
    }
}

TEST(FilePermissions, OfWhatIsMissingAreNone)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(permissionsOf(folder.path("missing")), std::nullopt);
    EXPECT_FALSE(setPermissions(folder.path("missing"), 0775));
}

TEST(FilePermissions, AreReadBehindALinkButNotSetThere)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("file", "");
    ASSERT_TRUE(setPermissions(file, 0640));
    std::filesystem::create_symlink(file, folder.path("link"));

    EXPECT_EQ(permissionsOf(folder.path("link")), 0640U);
    EXPECT_FALSE(setPermissions(folder.path("link"), 0775));
    EXPECT_EQ(permissionsOf(file), 0640U);
}

} // namespace quorvane::platform
