#pragma once

#include "platform/FileDescriptor.h"

#include <string>
#include <system_error>

#include <sys/types.h>

struct stat;

namespace quorvane::platform {

// A new file beside another, whose place it takes when it is complete: whoever looks, also after a crash,
// finds the old file or the new one, each whole. Goes away with the object when it has not taken the place by
// then.
class FileReplacement {
public:
    // Makes it, for nobody else to read, in the folder of `path`; error() says why when that failed. Nothing
    // else looks at what is at `path` before takePlace().
    explicit FileReplacement(const std::string& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    const std::error_code& error() const { return m_error; }
    // True when the folder allows no second file, which is no reason not to write the one that is there.
    bool isForbidden() const;
    // Open for writing; negative after a failure.
    int descriptor() const { return m_file.get(); }

    // True when the new file can stand for the old one, whose owner and group it has then: that has no other
    // names.
    bool canStandFor(const struct stat& old);
    // Sets the permission bits, syncs and takes the place of whatever file is at the path. After an error
    // that one is what it was.
    std::error_code takePlace(mode_t permissions);

private:
    std::string m_path;
    std::string m_folder;
    std::string m_name; // of the new file; empty when there is none
    FileDescriptor m_file;
    std::error_code m_error;
};

} // namespace quorvane::platform
