#pragma once

#include "codesign/ByteView.h"
#include "codesign/CodeFile.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane::codesign {

// The slots of the blobs of a signature.
namespace signatureSlot {
inline constexpr std::uint32_t codeDirectory = 0;
inline constexpr std::uint32_t infoPlist = 1;
inline constexpr std::uint32_t resourceSeal = 3;
inline constexpr std::uint32_t firstAlternate = 0x1000;
inline constexpr std::uint32_t lastAlternate = 0x1004;
inline constexpr std::uint32_t cms = 0x10000;
} // namespace signatureSlot

// Each blob begins with its magic number and its length.
inline constexpr std::uint64_t blobHeaderSize = 8;

// The embedded signature of a program: blobs by slot. Layout as published in the platform's public code
// signature headers; all numbers are big-endian.
//
// Owns the bytes that its blobs are views of. Movable, immutable; any thread.
class SignatureContainer {
public:
    // The container at `offset` of the file, at most `room` bytes. None when it is damaged, truncated, or
    // larger than any program's.
    static std::optional<SignatureContainer> read(
        const CodeFile& file, std::uint64_t offset, std::uint64_t room);
    static std::optional<SignatureContainer> parse(Bytes bytes);

    // The first blob in the slot, with its own header; none when there is none.
    std::optional<ByteView> blob(std::uint32_t slot) const;

    std::uint64_t size() const { return m_bytes.size(); }

private:
    struct Entry {
        std::uint32_t slot;
        std::uint32_t offset;
        std::uint32_t length;
    };

    SignatureContainer() = default;

    Bytes m_bytes;
    std::vector<Entry> m_entries;
};

} // namespace quorvane::codesign
