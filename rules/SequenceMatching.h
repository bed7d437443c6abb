#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace quorvane::rules {

using Sequence = std::vector<std::uint32_t>;
using PlacePair = std::pair<std::uint32_t, std::uint32_t>;

// What two sequences have in common: places with the same element, ascending in both. What stands once in
// both is matched first, as far as its order allows, and the rest between such places; so the answer is what
// a person would say of two versions of a text, and not always the longest one. Of a stretch in which nothing
// stands once and of which hardly anything is in common, only beginning and end are matched. Elements should
// be small numbers. Time in proportion to n log n.
std::vector<PlacePair> matchingPlaces(const Sequence& a, const Sequence& b);

} // namespace quorvane::rules
