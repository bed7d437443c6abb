#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace quorvane::platform {

// Puts `bytes` into the file at `path`, whole or not at all: what is there keeps its contents after an error.
// The file keeps its permission bits, owner and group; a new one is for owner and group alone (0640). A
// symbolic link is refused (ELOOP), and so is what is no regular file. Only where the folder allows no second
// file, or where a second one could not keep the owner or the other names of the first, it is written in
// place. Any thread.
std::error_code writeOutputFile(const std::string& path, std::string_view bytes);

} // namespace quorvane::platform
