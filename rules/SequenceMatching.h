#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace quorvane::rules {

using Sequence = std::vector<std::uint32_t>;
using PlacePair = std::pair<std::uint32_t, std::uint32_t>;

// A common subsequence of two sequences: positions with the same element, ascending in both. Elements that
// occur once in both are matched first, as far as their order allows, and the rest between them; so the
// result is what a reader would expect for two versions of a text, and not always the longest one. In a range
// without such elements and with hardly anything in common, only beginning and end are matched. Elements
// should be small numbers, since a table is indexed by them. Takes O(n log n) time. Pure.
std::vector<PlacePair> matchingPlaces(const Sequence& a, const Sequence& b);

} // namespace quorvane::rules
