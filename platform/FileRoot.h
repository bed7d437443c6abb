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

// The folder that paths begin at: the root of this machine's file system, or another folder that serves as
// the root of another machine's, such as a mounted volume.
//
// Within another folder links are followed as that machine follows them: an absolute link begins at the
// folder again, ".." goes no further up, and so no path escapes it, whatever is changed concurrently. A
// relative path begins at the folder, too. A value object; any thread.
class FileRoot {
public:
    // This machine's.
    FileRoot() = default;

    // Another folder, which is held open. None when it is missing or not a folder; `error` says why.
    static std::optional<FileRoot> at(const std::string& folder, std::error_code& error);

    bool isThisMachines() const { return !m_folder; }

    // Opens the file with the flags of open(2), which must not include O_CREAT. None, with errno set, when it
    // cannot be opened.
    FileDescriptor open(const std::string& path, int flags) const;

    // Opens a regular file for reading; never blocks on a pipe or a device. None when it cannot be opened or
    // is anything else.
    FileDescriptor openRegularFile(const std::string& path) const;

    // The contents of a regular file; none when it cannot be read or holds more than `largestSize` bytes.
    std::optional<std::string> contents(const std::string& path, std::size_t largestSize) const;

    // Calls `use` with the name of each entry of the folder at the path, in no order, until it returns false.
    void forEachName(const std::string& path, const std::function<bool(const std::string& name)>& use) const;

    // The result of stat(2) for a path; none when there is nothing.
    std::optional<struct stat> status(const std::string& path) const;
    bool isAnythingAt(const std::string& path) const { return status(path).has_value(); }
    // True for a folder and for a link that leads to one.
    bool isFolderAt(const std::string& path) const;

    // The absolute path, within the root, of what `path` leads to, free of links; none when there is nothing.
    std::optional<std::string> resolved(const std::string& path) const;

    // Compare the held folder objects: two that were opened by the same path differ.
    bool operator==(const FileRoot&) const = default;
    bool operator<(const FileRoot& other) const { return m_folder < other.m_folder; }

private:
    std::shared_ptr<const FileDescriptor> m_folder; // none: this machine's root
};

// How FileRoot opens a path below a folder where the kernel has no call for it: component by component, with
// the same results; none, with errno set, when it cannot be opened. `resolved`, unless null, receives the
// absolute path below the folder.
FileDescriptor openBelow(int folder, const std::string& path, int flags, std::string* resolved = nullptr);

} // namespace quorvane::platform
