#include "workflow/PreferencesFile.h"

#include "platform/FileBytes.h"
#include "platform/FilePermissions.h"
#include "platform/Log.h"

#include <cstdint>
#include <utility>

#include <sys/stat.h>

namespace quorvane {

namespace {

constexpr std::uint32_t filePermissions = 0775;

bool holdsSomething(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

bool keepUnread(const std::string& path, Log& log)
{
    const auto name = putUnreadFileAside(path);
    log.write(name ? "kept unreadable preferences as: " + *name
                   : "failed to keep unreadable preferences, not writing: " + path);
    return name.has_value();
}

} // namespace

PropertyList readPreferences(const std::string& path)
{
    auto settings = PropertyList::read(path);
    return settings ? std::move(*settings) : PropertyList();
}

void writePreferences(const std::string& path, const PropertyList& settings, Log& log)
{
    if (holdsSomething(path) && !PropertyList::read(path) && !keepUnread(path, log))
        return;
    log.write("writing to file: " + settings.description());
    if (!settings.writeToFile(path))
        log.write("failed to write preferences: " + path);
    if (!setPermissions(path, filePermissions))
        log.write("failed to set the permissions of: " + path);
}

} // namespace quorvane
