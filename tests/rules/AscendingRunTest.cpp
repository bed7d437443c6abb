#include "rules/AscendingRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <random>

namespace quorvane::rules {

namespace {

using Numbers = std::vector<std::uint32_t>;

// Those of `numbers` that stay where they are.
Numbers stayingOf(const Numbers& numbers)
{
    const std::vector<bool> isOut = outOfOrder(numbers);
    EXPECT_EQ(isOut.size(), numbers.size());
    Numbers staying;
    for (std::size_t at = 0; at < numbers.size(); ++at) {
        if (!isOut[at])
            staying.push_back(numbers[at]);
    }
    return staying;
}

// The length of the longest ascending subsequence, by comparing each pair.
std::size_t longestAscent(const Numbers& numbers)
{
    std::vector<std::size_t> lengths; // of the longest one that ends there
    for (std::size_t at = 0; at < numbers.size(); ++at) {
        std::size_t longest = 0;
        for (std::size_t before = 0; before < at; ++before) {
            if (numbers[before] < numbers[at])
                longest = std::max(longest, lengths[before]);
        }
        lengths.push_back(longest + 1);
    }
    return lengths.empty() ? 0 : *std::max_element(lengths.begin(), lengths.end());
}

} // namespace

TEST(AscendingRun, OfSortedNumbersIsAllOfThem)
{
    EXPECT_EQ(stayingOf({}), Numbers());
    EXPECT_EQ(stayingOf({7}), Numbers{7});
    EXPECT_EQ(stayingOf({0, 1, 5, UINT32_MAX}), (Numbers{0, 1, 5, UINT32_MAX}));
}

TEST(AscendingRun, LeavesOutTheOneThatHasMoved)
{
    EXPECT_EQ(stayingOf({4, 0, 1, 2, 3}), (Numbers{0, 1, 2, 3}));
    EXPECT_EQ(stayingOf({1, 2, 3, 4, 0}), (Numbers{1, 2, 3, 4}));
}

TEST(AscendingRun, CountsEqualNumbersOnce)
{
    EXPECT_EQ(stayingOf({3, 3, 3}).size(), 1U);
    EXPECT_EQ(stayingOf({1, 2, 2, 3}), (Numbers{1, 2, 3}));
}

TEST(AscendingRun, OfAnyNumbersIsALongestOne)
{
    std::mt19937 random(29);
    for (int round = 0; round < 3000; ++round) {
        Numbers numbers(random() % 12);
        for (std::uint32_t& number : numbers)
            number = static_cast<std::uint32_t>(random() % 10);
        const Numbers staying = stayingOf(numbers);
        ASSERT_EQ(std::adjacent_find(staying.begin(), staying.end(), std::greater_equal<>()), staying.end());
        ASSERT_EQ(staying.size(), longestAscent(numbers));
    }
}

} // namespace quorvane::rules
