#pragma once

#include "rules/FileLines.h"
#include "rules/SequenceMatching.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Which lines of three versions of a rules file correspond to each other, for their merge.
//
// Every line belongs to an entry: equal rules to the same one wherever they are, the first of a file with the
// first of another, the second with the second; a text to the entry of the line that it equals or has
// replaced.

namespace quorvane::rules {

struct MergeSide {
    enum Value : std::size_t { base, ours, theirs, count };
};

// One line across the files: its position in each.
struct AlignedLine {
    static constexpr std::uint32_t none = LineCatalogue::none;

    std::array<std::uint32_t, MergeSide::count> at{none, none, none};
    bool isRule = false;
    bool isRepeated = false; // a rule that occurred earlier in the file

    bool isIn(MergeSide::Value side) const { return at[side] != none; }
};

struct AlignedFile {
    std::vector<FileLine> lines;
    Sequence numbers; // by line: of its text
    Sequence entries; // by line; set by the alignment
};

// Sets the entries of the files' lines, which `catalogue` has numbered. Returns them: equal rules in the
// order in which they occur. Pure; throws only std::bad_alloc.
std::vector<AlignedLine> alignLines(
    const LineCatalogue& catalogue, std::array<AlignedFile, MergeSide::count>& files);

} // namespace quorvane::rules
