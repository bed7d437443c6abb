#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvane::platform {

// A file system at its place in the tree of folders.
struct Mount {
    std::string folder; // "/" or a path without "/" at its end
    std::string type; // as the kernel calls it: "ext4", "nfs4"
    bool isRemovable = false; // on a medium that can be taken out, as far as the kernel knows
};

// What is mounted now; empty when /proc cannot be read. Any thread.
std::vector<Mount> mountsOfThisMachine();

// The lines of /proc/self/mountinfo, of which those that are none are left out. Nothing is known there of
// media. Pure.
std::vector<Mount> mountsIn(std::string_view mountInfo);

// True for a file system on another machine. Pure.
bool isNetworkMount(const Mount& mount);

} // namespace quorvane::platform
