#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace quorvane::platform {

// The contents of the regular file at `path`, links followed. None when it is missing, unreadable, not a
// regular file or larger than `largestSize` bytes. Never blocks on a pipe or device.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t largestSize);
// `error`: why it could not be opened or read, ENOENT included; none when it is merely too large.
std::optional<std::string> readSmallFile(
    const std::string& path, std::size_t largestSize, std::error_code& error);

// Replaces the contents of the regular file at `path`, in place, or creates the file. False when that failed,
// which can leave it truncated. A symbolic link as last component of the path is refused; never blocks on a
// pipe or device.
bool writeFileInPlace(const std::string& path, std::string_view bytes);

// True for anything at `path`: a file, a folder, what a link leads to.
bool isAnythingAt(const std::string& path);

// True for a folder and for a link that leads to one.
bool isFolderAt(const std::string& path);

// True for a regular file, links followed, that can be read to its end and is UTF-8 text; an empty one
// counts. Read in bounded chunks; a file larger than the machine's memory is never text.
bool isTextAt(const std::string& path);

// Renames a file that could not be read completely to the first unused name of "PATH.unread", "PATH.unread.2"
// and so on, so that writing does not destroy its contents. Returns the new name; none, and the file stays,
// when that fails.
std::optional<std::string> putUnreadFileAside(const std::string& path);

// Renames it back, replacing whatever file has that name now. False, and nothing is changed, when that fails.
bool takeFileBack(const std::string& aside, const std::string& path);

} // namespace quorvane::platform
