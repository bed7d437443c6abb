#pragma once

#include "platform/FileDescriptor.h"

#include <string>
#include <system_error>

#include <sys/types.h>

struct stat;

namespace quorvane::platform {

// A new file beside another, which it replaces when it is complete: any reader, even after a crash, finds
// either the old file or the new one, each complete. Removed with the object unless it has replaced the file
// by then. One thread at a time.
class FileReplacement {
public:
    // Creates it, readable by its owner only, in the folder of `path`; error() says why when that failed. The
    // file at `path` is not touched before takePlace().
    explicit FileReplacement(const std::string& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    const std::error_code& error() const { return m_error; }
    // True when the folder permits no new file; the existing one may still be writable.
    bool isForbidden() const;
    // Open for writing; negative after a failure.
    int descriptor() const { return m_file.get(); }

    // True when the new file can replace the old one: that has no other hard links, and its owner and group
    // could be given to the new file.
    bool canStandFor(const struct stat& old);
    // Sets the permission bits, syncs and replaces whatever file is at the path. After an error that file is
    // unchanged.
    std::error_code takePlace(mode_t permissions);

private:
    std::string m_path;
    std::string m_folder;
    std::string m_name; // of the new file; empty when there is none
    FileDescriptor m_file;
    std::error_code m_error;
};

} // namespace quorvane::platform
