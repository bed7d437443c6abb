#pragma once

#include "platform/FileDescriptor.h"

#include <compare>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include <sys/stat.h>

namespace quorvane::platform {

// The folder that paths begin at: the root of this machine's file system, or another folder that stands for
// the root of another machine's, such as a mounted volume.
//
// Within another folder links are followed as that machine follows them: an absolute link begins at the
// folder again, ".." leads no further up, and so no path leads out of it, whatever is changed meanwhile. A
// path that is not absolute begins at the folder, too. A value object; any thread.
class FileRoot {
public:
    // This machine's.
    FileRoot() = default;

    // Another folder, which is held open. None when it is not there or is no folder; `error` says why.
    static std::optional<FileRoot> at(const std::string& folder, std::error_code& error);

    bool isThisMachines() const { return !m_folder; }

    // Opens what is there with the flags of open(2), which must make nothing. None, with errno set, when it
    // cannot be opened.
    FileDescriptor open(const std::string& path, int flags) const;

    // Opens a regular file for reading, without waiting on what is a pipe or a device. None when it cannot be
    // opened or is anything else.
    FileDescriptor openRegularFile(const std::string& path) const;

    // What such a file holds; none when it cannot be read or holds more than `largestSize` bytes.
    std::optional<std::string> contents(const std::string& path, std::size_t largestSize) const;

    // Calls `use` with the name of each thing in the folder at the path, in no order, until it answers false.
    void forEachName(const std::string& path, const std::function<bool(const std::string& name)>& use) const;

    // What stat(2) says of what a path leads to; none when there is nothing.
    std::optional<struct stat> status(const std::string& path) const;
    bool isAnythingAt(const std::string& path) const { return status(path).has_value(); }
    // True for a folder and for a link that leads to one.
    bool isFolderAt(const std::string& path) const;

    // The absolute path, within the root, of what `path` leads to, free of links; none when there is nothing.
    std::optional<std::string> resolved(const std::string& path) const;

    // By the folder that is held: two that were opened by one path differ.
    auto operator<=>(const FileRoot&) const = default;

private:
    std::shared_ptr<const FileDescriptor> m_folder; // none: this machine's root
};

// How FileRoot opens what is below a folder where the kernel cannot do it: component by component. The same
// answers; none, with errno set, when it cannot be opened. `resolved`, unless null, gets the absolute path
// below the folder.
FileDescriptor openBelow(int folder, const std::string& path, int flags, std::string* resolved = nullptr);

} // namespace quorvane::platform
