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

// The outcome of a read from a foreign file. cutShort: the file ends too early.
enum class ReadResult { complete, cutShort, failed };

// A foreign regular file, open for reading.
//
// It may shrink, grow or change while it is read: bytes are copied out (never mapped), and a read past its
// end is a regular result. One thread at a time.
class CodeFile {
public:
    // None when `path` within `root` is missing, unreadable or not a regular file. Links are followed. Never
    // blocks on a pipe and never opens a device.
    static std::optional<CodeFile> open(const std::string& path, const platform::FileRoot& root = {});
    static std::optional<CodeFile> adopt(platform::FileDescriptor descriptor);

    // In bytes, when the file was opened. Files of /proc may report 0 and hold more.
    std::uint64_t size() const { return m_size; }

    // True once bytes within size() could not be read: the device failed, or the file has shrunk. Conclusions
    // drawn from the file may then be wrong.
    bool hasFailed() const { return m_failed; }

    bool isSameFileAs(const CodeFile& other) const
    {
        return m_device == other.m_device && m_inode == other.m_inode;
    }

    // Fills `to` with the `length` bytes at `offset`.
    ReadResult read(std::uint64_t offset, void* to, std::size_t length) const;

    // The `length` bytes at `offset`; none when the file does not hold them, they are more than `largest`, or
    // reading fails. Never allocates more than the file claims to hold.
    std::optional<Bytes> bytes(std::uint64_t offset, std::uint64_t length, std::uint64_t largest) const;

    // Passes the `length` bytes at `offset` to `take` in order and in bounded chunks, until it returns false.
    ReadResult forEachPiece(
        std::uint64_t offset, std::uint64_t length, const std::function<bool(ByteView)>& take) const;

    // The same for all bytes up to the end of the file, whatever size() is.
    ReadResult forEachPieceToEnd(const std::function<bool(ByteView)>& take) const;

    // True when the `length` bytes at `offset` are there and all zero. Skips holes of a sparse file; false
    // also when more than any program needs is stored between them.
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
