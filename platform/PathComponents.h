#pragma once

#include <string>
#include <string_view>

// Path text taken apart as the Foundation framework does it: a trailing "/" is ignored and runs of "/" count
// as one. Pure functions; no file is looked at.

namespace quorvane::platform {

// "/a/b/" gives "b", "a" gives "a", "/" gives "/", "" gives "". The view points into `path`.
std::string_view lastPathComponent(std::string_view path);

// "/a/b" gives "/a", "/a" gives "/", "/" gives "/", "a" gives "", "" gives "".
std::string deletingLastPathComponent(std::string_view path);

} // namespace quorvane::platform
