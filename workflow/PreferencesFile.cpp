#include "workflow/PreferencesFile.h"

#include "platform/FileBytes.h"
#include "platform/FilePermissions.h"
#include "platform/Log.h"
#include "platform/PropertyListBounds.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::workflow {

namespace {

constexpr std::uint32_t filePermissions = 0775;
constexpr const char* cannotBeKept = "what it holds cannot be read, and not be kept under another name";

bool holdsSomething(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

// Whether the contents at `path` would be lost, since they could not be read.
bool isUnread(const std::string& path)
{
    return holdsSomething(path) && !platform::PropertyList::read(path);
}

std::string reasonText(int error)
{
    return error == 0 ? "the file could not be written whole" : std::generic_category().message(error);
}

// Why `path` denies the access `mode`; none when it does not.
std::optional<std::string> whyDenied(const std::string& path, int mode)
{
    return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0 ? std::nullopt
                                                                    : std::optional(reasonText(errno));
}

bool keepUnread(const std::string& path, platform::Log& log)
{
    const auto name = platform::putUnreadFileAside(path);
    log.write(name ? "kept unreadable preferences as: " + *name
                   : "failed to keep unreadable preferences, not writing: " + path);
    return name.has_value();
}

// Why `write`, which writes the file at `path`, failed; none when it did not. Sets the permissions.
template <class Write>
std::optional<std::string> writtenBy(const Write& write, const std::string& path, platform::Log& log)
{
    std::optional<std::string> failure;
    errno = 0;
    if (!write()) {
        const int error = errno;
        failure = whyPreferencesCannotBeSaved(path).value_or(reasonText(error));
        log.write("failed to write preferences: " + path);
    }
    if (!platform::setPermissions(path, filePermissions))
        log.write("failed to set the permissions of: " + path);
    return failure;
}

} // namespace

platform::PropertyList readPreferences(const std::string& path)
{
    auto settings = platform::PropertyList::read(path);
    return settings ? std::move(*settings) : platform::PropertyList();
}

std::optional<std::string> whyPreferencesAreUnread(const std::string& path)
{
    if (!isUnread(path))
        return std::nullopt;
    if (auto denied = whyDenied(path, R_OK))
        return denied;
    struct stat status { };
    const bool isTooLarge = stat(path.c_str(), &status) == 0
        && static_cast<std::uint64_t>(status.st_size) > platform::largestPropertyList;
    return isTooLarge ? "it is larger than " + std::to_string(platform::largestPropertyList >> 20U) + " MiB"
                      : "it is no property list, or a damaged one";
}

std::optional<std::string> whyPreferencesCannotBeSaved(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    struct stat status { };
    if (lstat(path.c_str(), &status) != 0)
        return errno == ENOENT ? whyDenied(folder, W_OK | X_OK) : reasonText(errno);
    if (!S_ISREG(status.st_mode))
        return "what stands in its place is no regular file";
    if (isUnread(path) && whyDenied(folder, W_OK | X_OK))
        return cannotBeKept;
    return whyDenied(path, W_OK);
}

std::optional<std::string> writePreferences(
    const std::string& path, const platform::PropertyList& settings, platform::Log& log)
{
    if (isUnread(path) && !keepUnread(path, log))
        return cannotBeKept;
    log.write("writing to file: " + settings.description());
    return writtenBy([&] { return settings.writeToFile(path); }, path, log);
}

std::optional<std::string> restorePreferences(
    const std::string& path, const std::string& bytes, platform::Log& log)
{
    if (isUnread(path) && !keepUnread(path, log))
        return cannotBeKept;
    return writtenBy([&] { return platform::writeFileInPlace(path, bytes); }, path, log);
}

} // namespace quorvane::workflow
