#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quorvane {

// The contents of the regular file at `path`, links followed. None when it is missing, unreadable, not a
// regular file or larger than `largestSize` bytes. Never blocks on a pipe or device.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t largestSize);

// True for anything at `path`: a file, a folder, what a link leads to.
bool isAnythingAt(const std::string& path);

} // namespace quorvane
