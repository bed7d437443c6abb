#pragma once

#include "codesign/CodeFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvane::codesign {

// As many bytes of a header are laid out alike for 32 and 64 bits.
inline constexpr std::size_t machHeaderPrefix = 28;

// A range of bytes; the offset counts from the start of the slice.
struct SliceRange {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

// What the header and load commands of one architecture's program tell, 32 or 64 bits, either byte order.
//
// Layouts as published in the platform's public Mach-O headers. Every number is as the file claims: not one
// of them says that the file really holds the bytes.
struct MachOSlice {
    std::uint64_t offset = 0; // in the file
    std::uint64_t length = 0; // as the file's size or the universal header says
    SliceRange signature; // offset 0: the slice is unsigned
    std::optional<SliceRange> infoPlist; // the section that stands for a bundle's Info.plist
    bool soundStructure = false; // nothing follows the last thing that the load commands speak of
};

// None when the file does not hold a Mach-O header and its load commands there, or a load command is
// malformed.
std::optional<MachOSlice> readSlice(const CodeFile& file, std::uint64_t offset, std::uint64_t length);

// The file type of a Mach-O header; none when `header` begins with no thin magic or is shorter than the
// field.
std::optional<std::uint32_t> machOFileType(ByteView header);

} // namespace quorvane::codesign
