#pragma once

#include <string_view>

namespace quorvane::codesign {

// True when `path` is in the part of the macOS file system that System Integrity Protection guards. Compares
// bytes with a fixed list of prefixes, without file access. Pure; any thread.
bool isSIP(std::string_view path);

} // namespace quorvane::codesign
