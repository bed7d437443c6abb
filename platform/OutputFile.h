#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace quorvane::platform {

// Writes `bytes` to the file at `path` completely or not at all: after an error an existing file keeps its
// contents. The file keeps its permission bits, owner and group; a new one is for owner and group alone
// (0640). A symbolic link is refused (ELOOP), and so is anything but a regular file. It is written in place
// only where the folder permits no new file, or where a replacement could not keep the owner or the other
// hard links. Any thread.
std::error_code writeOutputFile(const std::string& path, std::string_view bytes);

} // namespace quorvane::platform
