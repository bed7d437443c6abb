#pragma once

#include "platform/PropertyList.h"

#include <string>

namespace quorvane {

class Log;

// The settings in the file at `path`; an empty list when it is missing or unreadable.
PropertyList readPreferences(const std::string& path);

// Writes the settings in place and gives the file the permissions 0775. Failures are logged and nothing more.
// A file that readPreferences() could not read (damaged, too large) is kept beside the new one, under a name
// with ".unread" added; where that is impossible nothing is written.
void writePreferences(const std::string& path, const PropertyList& settings, Log& log);

} // namespace quorvane
