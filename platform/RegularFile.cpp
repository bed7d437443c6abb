#include "platform/RegularFile.h"

#include "platform/SystemError.h"

#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

// Why a file of that kind is not opened; no error for a regular file. Links are left to open(2).
std::error_code refusalOf(const struct stat& status)
{
    if (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode))
        return {};
    return systemError(S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP);
}

// Calls read(2) or write(2) until `size` bytes are done, or a call returns 0: the end of the file.
template <class Call> std::size_t repeat(std::size_t size, std::error_code& error, Call call)
{
    error.clear();
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = call(done, size - done);
        if (got == 0)
            break;
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            error = systemError(errno);
            break;
        }
    }
    return done;
}

} // namespace

FileDescriptor openRegularFile(const std::string& path, int flags, std::error_code& error, mode_t permissions)
{
    error.clear();
    struct stat status { };
    const int linkFlag = (flags & O_NOFOLLOW) != 0 ? AT_SYMLINK_NOFOLLOW : 0;
    if (path.find('\0') != std::string::npos)
        error = systemError(EINVAL);
    else if (fstatat(AT_FDCWD, path.c_str(), &status, linkFlag) == 0)
        error = refusalOf(status);
    if (error)
        return FileDescriptor();
    FileDescriptor file;
    do // calls on a FUSE file system can be interrupted
        file = FileDescriptor(open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, permissions));
    while (!file && errno == EINTR);
    if (!file || fstat(file.get(), &status) != 0)
        error = systemError(errno);
    else
        error = refusalOf(status); // the path may lead to something else by now
    return error ? FileDescriptor() : std::move(file);
}

std::size_t readFully(int descriptor, char* bytes, std::size_t size, std::error_code& error)
{
    return repeat(
        size, error, [&](std::size_t at, std::size_t rest) { return read(descriptor, bytes + at, rest); });
}

bool holdsExactly(int descriptor, std::string_view bytes)
{
    constexpr std::size_t pieceSize = std::size_t{256}
        << 10U; // bytes; small enough to stay in the processor's cache
    const auto piece = std::make_unique_for_overwrite<char[]>(pieceSize);
    for (;;) {
        std::error_code error;
        const std::size_t size = readFully(descriptor, piece.get(), pieceSize, error);
        if (error || bytes.substr(0, size) != std::string_view(piece.get(), size))
            return false;
        bytes.remove_prefix(size);
        if (size < pieceSize)
            return bytes.empty();
    }
}

std::size_t writeFully(int descriptor, std::string_view bytes, std::error_code& error)
{
    return repeat(bytes.size(), error,
        [&](std::size_t at, std::size_t rest) { return write(descriptor, bytes.data() + at, rest); });
}

} // namespace quorvane::platform
