#include "platform/Mounts.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvane::platform {

TEST(Mounts, AreReadFromTheKernelsLines)
{
    const auto mounts = mountsIn("22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                                 "40 22 0:35 / /mnt/My\\040Disk rw - nfs4 server:/x rw\n"
                                 "41 22 0:36 / /run rw shared:2 master:3 - tmpfs tmpfs rw\n");
    ASSERT_EQ(mounts.size(), 3U);
    EXPECT_EQ(mounts[0].folder, "/");
    EXPECT_EQ(mounts[0].type, "ext4");
    EXPECT_EQ(mounts[1].folder, "/mnt/My Disk");
    EXPECT_EQ(mounts[2].type, "tmpfs");
}

TEST(Mounts, LeaveOutLinesThatAreNone)
{
    EXPECT_TRUE(mountsIn("").empty());
    EXPECT_TRUE(mountsIn("22 1 8:1 / / rw\nnonsense\n22 1 8:1 / /a rw shared:1 -\n").empty());
    EXPECT_EQ(mountsIn("22 1 8:1 / /a\\9b\\ rw - ext4 x rw\n").at(0).folder, "/a\\9b\\");
}

TEST(Mounts, OfOtherMachinesAreThoseOfNetworkFileSystems)
{
    EXPECT_TRUE(isNetworkMount({"/n", "nfs4"}));
    EXPECT_TRUE(isNetworkMount({"/n", "cifs"}));
    EXPECT_FALSE(isNetworkMount({"/n", "ext4"}));
}

TEST(Mounts, OfThisMachineHoldItsRoot)
{
    const auto mounts = mountsOfThisMachine();
    EXPECT_TRUE(
        std::any_of(mounts.begin(), mounts.end(), [](const Mount& mount) { return mount.folder == "/"; }));
}

} // namespace quorvane::platform
