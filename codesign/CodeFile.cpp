#include "codesign/CodeFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::codesign {

namespace {

// Large enough that the cost of system calls does not matter, small enough to stay in the processor's cache.
constexpr std::uint64_t pieceSize = 256U << 10U;

// The bytes that a comparison with zeros may read: about a second. Finding a range of data counts as reading,
// too.
constexpr std::uint64_t mostCompared = 4ULL << 30U;
constexpr std::uint64_t costOfRange = 64U << 10U;

struct DataRange {
    std::uint64_t begin;
    std::uint64_t end;
};

// The first bytes within [begin, end) that the file really stores; an empty range at `end` when all is a
// hole. Without support for holes, everything counts as stored.
DataRange nextData(int descriptor, std::uint64_t begin, std::uint64_t end)
{
    const off_t data = lseek(descriptor, static_cast<off_t>(begin), SEEK_DATA);
    if (data < 0)
        return errno == ENXIO ? DataRange{end, end} : DataRange{begin, end};
    const off_t hole = lseek(descriptor, data, SEEK_HOLE);
    const std::uint64_t from = std::min(static_cast<std::uint64_t>(data), end);
    const std::uint64_t until = hole < 0 ? end : std::min(static_cast<std::uint64_t>(hole), end);
    return {from, std::max(from, until)};
}

bool isAllZero(ByteView bytes)
{
    return bytes.empty()
        || (bytes.u8(0) == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

} // namespace

std::optional<CodeFile> CodeFile::open(const std::string& path, const platform::FileRoot& root)
{
    return adopt(root.openRegularFile(path));
}

std::optional<CodeFile> CodeFile::adopt(platform::FileDescriptor descriptor)
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

// Fills `to` up to the end of the file and returns how many bytes; none when reading fails.
std::optional<std::size_t> CodeFile::readUpTo(std::uint64_t offset, void* to, std::size_t length) const
{
    std::size_t filled = 0;
    if (offset > std::numeric_limits<off_t>::max() - length)
        return filled;
    while (filled < length) {
        const ssize_t got = pread(m_descriptor.get(), static_cast<std::uint8_t*>(to) + filled,
            length - filled, static_cast<off_t>(offset + filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            m_failed = true;
            return std::nullopt;
        }
        if (got == 0)
            break;
        filled += static_cast<std::size_t>(got);
    }
    return filled;
}

ReadResult CodeFile::read(std::uint64_t offset, void* to, std::size_t length) const
{
    const auto filled = readUpTo(offset, to, length);
    if (!filled)
        return ReadResult::failed;
    if (*filled == length)
        return ReadResult::complete;
    m_failed = m_failed || offset + *filled < m_size;
    return ReadResult::cutShort;
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

ReadResult CodeFile::forEachPieceToEnd(const std::function<bool(ByteView)>& take) const
{
    Bytes piece(static_cast<std::size_t>(pieceSize));
    std::uint64_t offset = 0;
    while (const auto filled = readUpTo(offset, piece.data(), piece.size())) {
        if (*filled == 0 || !take(ByteView(piece.data(), *filled)))
            return ReadResult::complete;
        offset += *filled;
    }
    return ReadResult::failed;
}

bool CodeFile::isZero(std::uint64_t offset, std::uint64_t length) const
{
    if (offset > m_size || length > m_size - offset)
        return false;
    const std::uint64_t end = offset + length;
    std::uint64_t left = mostCompared;
    while (offset < end) {
        const DataRange data = nextData(m_descriptor.get(), offset, end);
        const std::uint64_t stored = data.end - data.begin;
        const std::uint64_t cost = std::max(stored, costOfRange);
        if (cost > left)
            return false;
        left -= cost;
        bool zero = true;
        const ReadResult result = forEachPiece(data.begin, stored, [&zero](ByteView piece) {
            zero = isAllZero(piece);
            return zero;
        });
        if (!zero || result != ReadResult::complete)
            return false;
        offset = data.end;
    }
    return true;
}

} // namespace quorvane::codesign
