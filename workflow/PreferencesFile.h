#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

// The settings in the file at `path`; an empty list when it is missing or unreadable. All functions: any
// thread.
platform::PropertyList readPreferences(const std::string& path);

// Why readPreferences() returns an empty list although the file at `path` is not empty: "it is larger than 16
// MiB", for example. None when it was read, is missing or empty.
std::optional<std::string> whyPreferencesAreUnread(const std::string& path);

// Why writePreferences() would fail now: "Permission denied", for example, when another administrator owns
// the file. None when no reason can be found without writing.
std::optional<std::string> whyPreferencesCannotBeSaved(const std::string& path);

// Writes the settings in place and gives the file the permissions 0775. Returns why the settings could not be
// written, and logs that; none when they were. Permissions that cannot be set are only logged. A file that
// readPreferences() could not read (damaged, too large) is first renamed with ".unread" added; if that fails,
// nothing is written.
std::optional<std::string> writePreferences(
    const std::string& path, const platform::PropertyList& settings, platform::Log& log);

// The same with the exact bytes of a list that the file contained earlier.
std::optional<std::string> restorePreferences(
    const std::string& path, const std::string& bytes, platform::Log& log);

} // namespace quorvane::workflow
