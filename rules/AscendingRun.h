#pragma once

#include <cstdint>
#include <vector>

namespace quorvane::rules {

// By position: true for each of `numbers` outside one longest ascending subsequence. Moving exactly these
// sorts the sequence with the fewest moves. Takes O(n log n) time. Pure.
std::vector<bool> outOfOrder(const std::vector<std::uint32_t>& numbers);

} // namespace quorvane::rules
