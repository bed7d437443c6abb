#include "platform/OutputFile.h"

#include "platform/FileReplacement.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

constexpr mode_t ownerAndGroup = 0640;
constexpr mode_t permissionBits = 07777;

std::error_code writeAll(int descriptor, std::string_view bytes)
{
    std::error_code error;
    if (writeFully(descriptor, bytes, error) != bytes.size() && !error)
        error = systemError(EIO); // a write that returned 0 without an error
    return error;
}

std::error_code writeInPlace(int descriptor, std::string_view bytes)
{
    if (const std::error_code error = writeAll(descriptor, bytes))
        return error;
    const bool done = ftruncate(descriptor, static_cast<off_t>(bytes.size())) == 0 && fsync(descriptor) == 0;
    return done ? std::error_code() : systemError(errno);
}

} // namespace

std::error_code writeOutputFile(const std::string& path, std::string_view bytes)
{
    std::error_code error;
    const FileDescriptor existing = openRegularFile(path, O_WRONLY | O_NOFOLLOW, error);
    if (error && error != std::errc::no_such_file_or_directory)
        return error;
    struct stat old { };
    if (existing && fstat(existing.get(), &old) != 0)
        return systemError(errno);
    FileReplacement file(path);
    if (existing && (file.isForbidden() || (!file.error() && !file.canStandFor(old))))
        return writeInPlace(existing.get(), bytes);
    if (file.error())
        return file.error();
    error = writeAll(file.descriptor(), bytes);
    return error ? error : file.takePlace(existing ? old.st_mode & permissionBits : ownerAndGroup);
}

} // namespace quorvane::platform
