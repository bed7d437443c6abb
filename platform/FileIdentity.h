#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

struct stat;

namespace quorvane::platform {

// Which file was at a path, and in which state: two equal identities mean the same file with, as far as the
// file system's clock can distinguish, the same contents. "No file" is an identity as well. A value object.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0; // 0: there is no file
    std::int64_t size = 0; // bytes
    std::int64_t modified = 0; // contents: nanoseconds since 1970
    std::int64_t changed = 0; // contents, permission bits, owner, names: nanoseconds since 1970

    bool isMissing() const { return inode == 0; }
    // True for the same file, whatever its contents.
    bool isSameFileAs(const FileIdentity& other) const
    {
        return device == other.device && inode == other.inode;
    }
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;

    static FileIdentity missing() { return {}; }
    static FileIdentity ofStatus(const struct stat& status);
    // Of the file at `path`; for a symbolic link, of the link itself. Missing only when nothing is there
    // (ENOENT, ENOTDIR): for any other reason none, and `error` says why.
    static std::optional<FileIdentity> ofPath(const std::string& path, std::error_code& error);
    // Of the open file; none when the system call fails, and `error` says why.
    static std::optional<FileIdentity> ofDescriptor(int descriptor, std::error_code& error);
};

} // namespace quorvane::platform
