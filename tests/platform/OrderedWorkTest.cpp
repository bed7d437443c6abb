#include "platform/OrderedWork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace quorvane::platform {

TEST(OrderedWork, ResultsAreUsedInOrderOnTheCallingThread)
{
    for (const std::size_t count : {0U, 1U, 2U, 1000U}) {
        const auto caller = std::this_thread::get_id();
        std::vector<std::size_t> used;
        makeInOrder(
            count, [](std::size_t number) { return std::to_string(number); },
            [&](std::size_t number, const std::string& made) {
                EXPECT_EQ(std::this_thread::get_id(), caller);
                EXPECT_EQ(made, std::to_string(number));
                used.push_back(number);
            });
        ASSERT_EQ(used.size(), count);
        for (std::size_t number = 0; number < count; ++number)
            EXPECT_EQ(used[number], number);
    }
}

TEST(OrderedWork, NoMoreThanSoManyResultsWaitForTheirTurn)
{
    std::atomic<std::size_t> made{0};
    std::size_t mostAhead = 0;
    makeInOrder(
        5000, [&made](std::size_t) { return ++made; },
        [&](std::size_t number, std::size_t) { mostAhead = std::max(mostAhead, made - number); });
    EXPECT_LE(mostAhead, 256U);
    EXPECT_EQ(made, 5000U);
}

} // namespace quorvane::platform
