#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::platform {

// The permission bits, 07777 at most, of what is at `path`, links followed. None when that cannot be
// determined.
std::optional<std::uint32_t> permissionsOf(const std::string& path);

// Gives what is at `path` these permission bits. False when that is refused, as it is for a symbolic link.
bool setPermissions(const std::string& path, std::uint32_t permissions);

} // namespace quorvane::platform
