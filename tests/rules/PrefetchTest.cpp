#include "rules/Prefetch.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

namespace quorvane::rules {

TEST(Prefetch, EachIsUsedInOrderAfterThoseOfItsStepsForWhichThereIsTime)
{
    constexpr std::size_t distance = 8;
    for (const std::size_t count : {0U, 1U, 9U, 17U, 100U}) {
        std::vector<std::size_t> used;
        std::vector<std::string> taken(count);
        forEachPrefetched(
            count,
            [&](std::size_t at) {
                used.push_back(at);
                EXPECT_EQ(taken.at(at), at < distance ? "" : at < 2 * distance ? "2" : "12") << at;
            },
            [&](std::size_t at) { taken.at(at) += "1"; }, [&](std::size_t at) { taken.at(at) += "2"; });

        std::vector<std::size_t> all(count);
        std::iota(all.begin(), all.end(), 0U);
        EXPECT_EQ(used, all);
    }
}

TEST(Prefetch, AnyAddressIsAllowed)
{
    prefetchMemory(nullptr);
    std::array<char, 1000> large{};
    prefetchObject(large);
}

} // namespace quorvane::rules
