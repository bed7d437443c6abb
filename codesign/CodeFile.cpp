#include "codesign/CodeFile.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

// Large enough that system calls do not count, small enough to stay in the processor's cache.
constexpr std::uint64_t pieceSize = 256U << 10U;

} // namespace

std::optional<CodeFile> CodeFile::open(const std::string& path)
{
    struct stat status { };
    if (path.find('\0') != std::string::npos || stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return adopt(FileDescriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)));
}

std::optional<CodeFile> CodeFile::adopt(FileDescriptor descriptor)
{
    struct stat status { };
    if (!descriptor || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    CodeFile file;
    file.m_descriptor = std::move(descriptor);
    file.m_size = static_cast<std::uint64_t>(status.st_size);
    file.m_device = status.st_dev;
    file.m_inode = status.st_ino;
    return file;
}

ReadResult CodeFile::read(std::uint64_t offset, void* to, std::size_t length) const
{
    auto* target = static_cast<std::uint8_t*>(to);
    if (offset > std::numeric_limits<off_t>::max() - length)
        return ReadResult::cutShort;
    while (length > 0) {
        const ssize_t got = pread(m_descriptor.get(), target, length, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return got == 0 ? ReadResult::cutShort : ReadResult::failed;
        target += got;
        offset += static_cast<std::uint64_t>(got);
        length -= static_cast<std::size_t>(got);
    }
    return ReadResult::complete;
}

std::optional<Bytes> CodeFile::bytes(std::uint64_t offset, std::uint64_t length, std::uint64_t largest) const
{
    if (length > largest || offset > m_size || length > m_size - offset)
        return std::nullopt;
    Bytes result(static_cast<std::size_t>(length));
    if (read(offset, result.data(), result.size()) != ReadResult::complete)
        return std::nullopt;
    return result;
}

ReadResult CodeFile::forEachPiece(
    std::uint64_t offset, std::uint64_t length, const std::function<bool(ByteView)>& take) const
{
    Bytes piece(static_cast<std::size_t>(std::min(length, pieceSize)));
    while (length > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(length, piece.size()));
        const ReadResult result = read(offset, piece.data(), wanted);
        if (result != ReadResult::complete)
            return result;
        if (!take(ByteView(piece.data(), wanted)))
            break;
        offset += wanted;
        length -= wanted;
    }
    return ReadResult::complete;
}

} // namespace quorvane
