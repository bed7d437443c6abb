#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

// The settings in the file at `path`; an empty list when it is missing or unreadable.
platform::PropertyList readPreferences(const std::string& path);

// Why readPreferences() answers an empty list though the file at `path` holds something: "it is larger than
// 16 MiB", say. None when it was read, is missing or empty.
std::optional<std::string> whyPreferencesAreUnread(const std::string& path);

// Why writePreferences() would fail now: "Permission denied", say, where another administrator owns the file.
// None when nothing stands in the way, as far as can be told without writing.
std::optional<std::string> whyPreferencesCannotBeSaved(const std::string& path);

// Writes the settings in place and gives the file the permissions 0775. Returns why the settings could not be
// written, and logs that; none when they were. Permissions that cannot be given are only logged. A file that
// readPreferences() could not read (damaged, too large) is kept beside the new one, under a name with
// ".unread" added; where that is impossible nothing is written.
std::optional<std::string> writePreferences(
    const std::string& path, const platform::PropertyList& settings, platform::Log& log);

// The same with the very bytes of a list, as the file held them once.
std::optional<std::string> restorePreferences(
    const std::string& path, const std::string& bytes, platform::Log& log);

} // namespace quorvane::workflow
