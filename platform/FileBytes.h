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
// `error`: why it could not be opened or read, ENOENT included; none where it only is too large.
std::optional<std::string> readSmallFile(
    const std::string& path, std::size_t largestSize, std::error_code& error);

// Replaces the contents of the regular file at `path`, in place, or makes the file. False when that failed,
// which can leave it short. A symbolic link as last component of the path is refused; never blocks on a pipe
// or device.
bool writeFileInPlace(const std::string& path, std::string_view bytes);

// True for anything at `path`: a file, a folder, what a link leads to.
bool isAnythingAt(const std::string& path);

// True for a folder and for a link that leads to one.
bool isFolderAt(const std::string& path);

// True for a regular file, links followed, that can be read to its end and is UTF-8 text, if only an empty
// one. It is read in bounded pieces; a file larger than the machine's memory is never taken for text.
bool isTextAt(const std::string& path);

// Gives a file that could not be read whole another name beside it, one that nothing has yet: "PATH.unread",
// "PATH.unread.2" and so on, so that writing does not lose what it holds. Returns the name; none, and the
// file stays, when that fails.
std::optional<std::string> putUnreadFileAside(const std::string& path);

// Gives it its name back, in place of whatever file has that now. False, and nothing is changed, when that
// fails.
bool takeFileBack(const std::string& aside, const std::string& path);

} // namespace quorvane::platform
