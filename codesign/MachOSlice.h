#pragma once

#include "codesign/CodeFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvane::codesign {

// The length of the header fields that are the same for 32 and 64 bits.
inline constexpr std::size_t machHeaderPrefix = 28;

// A range of bytes; the offset is relative to the start of the slice.
struct SliceRange {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

// The header and load commands of the program of one architecture, 32 or 64 bits, either byte order.
//
// Layouts as published in the platform's public Mach-O headers. All numbers are claims of the file: none of
// them proves that the file holds the bytes. A value object.
struct MachOSlice {
    std::uint64_t offset = 0; // in the file
    std::uint64_t length = 0; // from the file's size or the universal header
    SliceRange signature; // offset 0: the slice is unsigned
    std::optional<SliceRange> infoPlist; // the section that replaces a bundle's Info.plist
    bool soundStructure = false; // nothing follows the last range that the load commands describe
};

// None when there is no complete Mach-O header with its load commands at `offset`, or a load command is
// malformed.
std::optional<MachOSlice> readSlice(const CodeFile& file, std::uint64_t offset, std::uint64_t length);

// The file type of a Mach-O header; none when `header` does not begin with a thin magic or is too short.
std::optional<std::uint32_t> machOFileType(ByteView header);

} // namespace quorvane::codesign
