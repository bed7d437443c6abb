#pragma once

#include <cstdint>
#include <vector>

namespace quorvane::rules {

// By place: which of `numbers` are no part of a longest ascending subsequence. What has to move, and what to
// stay, to put them in order with the fewest moves. Time in proportion to n log n.
std::vector<bool> outOfOrder(const std::vector<std::uint32_t>& numbers);

} // namespace quorvane::rules
