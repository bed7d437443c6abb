#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvane::platform {

// A mounted file system.
struct Mount {
    std::string folder; // "/" or a path without "/" at its end
    std::string type; // as the kernel calls it: "ext4", "nfs4"
    bool isRemovable = false; // on a removable medium, as far as the kernel knows
};

// What is mounted now; empty when /proc cannot be read. Any thread.
std::vector<Mount> mountsOfThisMachine();

// The mounts in the text of /proc/self/mountinfo; malformed lines are skipped. isRemovable is never set,
// since the text does not say. Pure.
std::vector<Mount> mountsIn(std::string_view mountInfo);

// True for a file system on another machine. Pure.
bool isNetworkMount(const Mount& mount);

} // namespace quorvane::platform
