#pragma once

#include "codesign/ByteView.h"
#include "codesign/Hasher.h"
#include "codesign/ValidityStatus.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane::codesign {

namespace codeDirectoryFlag {
inline constexpr std::uint32_t adHoc = 0x2;
inline constexpr std::uint32_t checkExpiration = 0x400;
} // namespace codeDirectoryFlag

// The hash types of a CodeDirectory.
namespace hashType {
inline constexpr std::uint8_t sha1 = 1;
inline constexpr std::uint8_t sha256 = 2;
inline constexpr std::uint8_t sha256Cut = 3; // truncated to 20 bytes
inline constexpr std::uint8_t sha384 = 4;
} // namespace hashType

// A list of hashes of a program, and the identity that the program claims. Layout as published in the
// platform's public code signature headers.
//
// A set of views of the blob it was parsed from, which must outlive it. Immutable; any thread.
class CodeDirectory {
public:
    // Parses a whole blob. `valid` when everything that the header refers to is inside the blob; else the
    // reason, and `directory` is unchanged.
    static ValidityStatus parse(ByteView blob, CodeDirectory& directory);

    ByteView blob() const { return m_blob; }
    std::uint32_t flags() const { return m_blob.u32(12); }
    std::uint8_t hashType() const { return m_blob.u8(37); }
    std::uint8_t platformIdentifier() const { return m_blob.u8(38); }
    std::string_view identifier() const { return m_identifier; }
    std::optional<std::string_view> teamIdentifier() const { return m_teamIdentifier; }

    // The number of signed bytes, from the start of the slice.
    std::uint64_t codeLimit() const { return m_codeLimit; }

    // In bytes; none when all signed bytes are one page.
    std::optional<std::uint64_t> pageSize() const;

    std::uint32_t pageCount() const { return m_blob.u32(28); }
    std::uint32_t specialSlotCount() const { return m_blob.u32(24); }

    // The stored hash of a page. Requires page < pageCount().
    ByteView pageHash(std::uint32_t page) const;

    // The stored hash of a special slot; none when the slot is beyond the last or its hash is all zeros: both
    // mean that there is nothing to hash.
    std::optional<ByteView> specialHash(std::uint32_t slot) const;

    // None for an unknown hash type.
    std::optional<HashAlgorithm> hashAlgorithm() const;

private:
    ValidityStatus readTexts();
    bool hashesLieInside() const;
    bool pagesFitLimit() const;
    bool scatterListEnds() const;
    bool hasField(std::uint32_t sinceVersion) const { return m_blob.u32(8) >= sinceVersion; }
    std::uint64_t hashOffset() const { return m_blob.u32(16); }
    std::uint64_t hashSize() const { return m_blob.u8(36); }

    ByteView m_blob;
    std::string_view m_identifier;
    std::optional<std::string_view> m_teamIdentifier;
    std::uint64_t m_codeLimit = 0;
};

} // namespace quorvane::codesign
