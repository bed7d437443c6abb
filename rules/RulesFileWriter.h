#pragma once

#include "platform/FileIdentity.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::rules {

class RulesContent;

// How a write went.
struct WriteResult {
    // False when the file could not be opened, or has its old content back: then `message` says why.
    bool opened = false;
    // The last failure to open, write or cut to length; none when the file holds what was written.
    std::optional<std::string> message;
    // What failed besides, though every byte is there: syncing, closing, permission bits.
    std::vector<std::string> warnings;
    // The file as it was left; none when that cannot be told.
    std::optional<platform::FileIdentity> identity;
};

// Writes a rules file in place: an existing one keeps its inode, and keeps its old contents until the new
// ones have been written over them. A symbolic link as last component of the path is refused, and so is what
// is no regular file, whose permission bits stay too. The file ends with the permission bits 0640, on disk.
//
// Deliberate: after a failure it goes on with the next rule, so that the file holds what could be written.
// Where `old` is given, the file's present bytes, a failure puts these back instead.
WriteResult writeRulesFile(
    const std::string& path, const RulesContent& content, std::optional<std::string_view> old = std::nullopt);

} // namespace quorvane::rules
