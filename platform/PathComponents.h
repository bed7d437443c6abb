#pragma once

#include <string>
#include <string_view>

// Splits path text as the Foundation framework does: a trailing "/" is ignored and runs of "/" count as one.
// Pure functions without file access.

namespace quorvane::platform {

// "/a/b/" gives "b", "a" gives "a", "/" gives "/", "" gives "". The view points into `path`.
std::string_view lastPathComponent(std::string_view path);

// "/a/b" gives "/a", "/a" gives "/", "/" gives "/", "a" gives "", "" gives "".
std::string deletingLastPathComponent(std::string_view path);

} // namespace quorvane::platform
