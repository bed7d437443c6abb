#pragma once

#include <string_view>

namespace quorvane::codesign {

// True when `path` lies in the part of macOS' file system that System Integrity Protection guards. The list
// of prefixes is fixed; bytes are compared, no file is looked at. Pure; any thread.
bool isSIP(std::string_view path);

} // namespace quorvane::codesign
