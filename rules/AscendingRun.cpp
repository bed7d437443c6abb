#include "rules/AscendingRun.h"

#include <algorithm>
#include <cstddef>

namespace quorvane::rules {

// Patience sorting: a binary search finds the longest subsequence that each number can extend; following the
// predecessors back from the end of the longest one yields its members.
std::vector<bool> outOfOrder(const std::vector<std::uint32_t>& numbers)
{
    std::vector<std::size_t> ends; // by length less 1: the end of the subsequence with the lowest last number
    std::vector<std::size_t> before(numbers.size()); // the predecessor in the subsequence that ends here
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto place = std::lower_bound(ends.begin(), ends.end(), numbers[i],
            [&](std::size_t end, std::uint32_t number) { return numbers[end] < number; });
        before[i] = place == ends.begin() ? i : *(place - 1);
        if (place == ends.end())
            ends.push_back(i);
        else
            *place = i;
    }
    std::vector<bool> isOut(numbers.size(), true);
    std::size_t at = ends.empty() ? 0 : ends.back();
    for (std::size_t left = ends.size(); left > 0; --left) {
        isOut[at] = false;
        at = before[at];
    }
    return isOut;
}

} // namespace quorvane::rules
