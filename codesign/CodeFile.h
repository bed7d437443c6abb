#pragma once

#include "codesign/ByteView.h"
#include "platform/FileDescriptor.h"
#include "platform/FileRoot.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <sys/types.h>

namespace quorvane::codesign {

// How a read from a foreign file ended. cutShort: the file ends before.
enum class ReadResult { complete, cutShort, failed };

// A foreign regular file, open for reading.
//
// It may shrink, grow or change while it is read: bytes are copied out (never mapped), and a read past its
// end is an answer. Not for two threads at once.
class CodeFile {
public:
    // None when nothing, nothing readable or no regular file is at `path` within `root`. Links are followed.
    // Never blocks on a pipe and never opens a device.
    static std::optional<CodeFile> open(const std::string& path, const platform::FileRoot& root = {});
    static std::optional<CodeFile> adopt(platform::FileDescriptor descriptor);

    // In bytes, when the file was opened. The system's own files (/proc) may say 0 and hold more.
    std::uint64_t size() const { return m_size; }

    // True once bytes that size() promises could not be read: the device failed, or the file has shrunk.
    // What was concluded from the file until then may be wrong.
    bool hasFailed() const { return m_failed; }

    bool isSameFileAs(const CodeFile& other) const
    {
        return m_device == other.m_device && m_inode == other.m_inode;
    }

    // Fills `to` with the `length` bytes at `offset`.
    ReadResult read(std::uint64_t offset, void* to, std::size_t length) const;

    // The `length` bytes at `offset`; none when the file does not hold them, they are more than `largest`, or
    // reading fails. Nothing is allocated that the file does not claim to hold.
    std::optional<Bytes> bytes(std::uint64_t offset, std::uint64_t length, std::uint64_t largest) const;

    // Hands the `length` bytes at `offset` to `take` in order and in bounded pieces, until it answers false.
    ReadResult forEachPiece(
        std::uint64_t offset, std::uint64_t length, const std::function<bool(ByteView)>& take) const;

    // The same for all bytes up to the file's end, whatever size() says.
    ReadResult forEachPieceToEnd(const std::function<bool(ByteView)>& take) const;

    // True when the `length` bytes at `offset` are there and all zero. Holes of the file take no time; false
    // also when there is more stored between them than any program has.
    bool isZero(std::uint64_t offset, std::uint64_t length) const;

private:
    std::optional<std::size_t> readUpTo(std::uint64_t offset, void* to, std::size_t length) const;

    platform::FileDescriptor m_descriptor;
    std::uint64_t m_size = 0;
    mutable bool m_failed = false;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

} // namespace quorvane::codesign
