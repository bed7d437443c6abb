#pragma once

#include "platform/FileDescriptor.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/types.h>

// Opening, reading and writing regular files by descriptor: never blocks on a pipe or a device, and retries
// calls interrupted by a signal. Any thread.

namespace quorvane::platform {

// Opens the regular file at `path` with the flags of open(2); a symbolic link is followed unless O_NOFOLLOW
// is among them. Anything else is not even opened, since that alone can have side effects: none then, and
// `error` says why, EISDIR for a folder, ENOTSUP for a pipe, socket or device.
FileDescriptor openRegularFile(
    const std::string& path, int flags, std::error_code& error, mode_t permissions = 0);

// Reads up to `size` bytes into `bytes`, fewer only at the end of the file or after an error. Returns the
// number read.
std::size_t readFully(int descriptor, char* bytes, std::size_t size, std::error_code& error);

// True when the file, from its current offset, is exactly `bytes`. Read in chunks, only up to the first
// difference.
bool holdsExactly(int descriptor, std::string_view bytes);

// Writes all of `bytes`. Returns how many were written: fewer only after an error.
std::size_t writeFully(int descriptor, std::string_view bytes, std::error_code& error);

} // namespace quorvane::platform
