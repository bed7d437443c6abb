#pragma once

#include "platform/FileIdentity.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::rules {

class RulesContent;

// The outcome of a write.
struct WriteResult {
    // False when the file could not be opened, or got its old contents back: then `message` says why.
    bool opened = false;
    // The last failure to open, write or truncate; none when the file holds exactly the new contents.
    std::optional<std::string> message;
    // Failures although all bytes were written: syncing, closing, permission bits.
    std::vector<std::string> warnings;
    // The identity of the file afterwards; none when it could not be determined.
    std::optional<platform::FileIdentity> identity;
};

// Writes a rules file in place: an existing one keeps its inode, and old bytes stay until the new ones
// overwrite them. A symbolic link as last component of the path is refused, and so is anything but a regular
// file, whose permission bits are not changed either. Afterwards the file has the permission bits 0640 and is
// synced to disk. Any thread.
//
// Deliberate: after a failure it continues with the next rule, so that the file holds what could be written.
// If `old` is given, the file's current bytes, a failure restores these instead.
WriteResult writeRulesFile(
    const std::string& path, const RulesContent& content, std::optional<std::string_view> old = std::nullopt);

} // namespace quorvane::rules
