#include "workflow/StateDict.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

TEST(StateDict, ARuleWithoutAnEntryIsTicked)
{
    const StateDict ticks;
    EXPECT_TRUE(ticks.isTicked(7));
    EXPECT_EQ(ticks.entry("7"), std::nullopt);
    EXPECT_EQ(ticks.countOfTicked(3), 3U);
}

TEST(StateDict, UntickingStores2AndTickingAgain1)
{
    StateDict ticks;
    ticks.setTicked(7, false);
    EXPECT_EQ(ticks.entry("7"), 2);
    EXPECT_FALSE(ticks.isTicked(7));
    EXPECT_EQ(ticks.countOfTicked(3), 2U);
    ticks.setTicked(7, true);
    EXPECT_EQ(ticks.entry("7"), 1);
    EXPECT_TRUE(ticks.isTicked(7));
    EXPECT_EQ(ticks.countOfTicked(3), 3U);
}

TEST(StateDict, EntriesAreFoundByTheDecimalTextOfTheSequence)
{
    StateDict ticks;
    ticks.setTicked(1234567890123, false);
    EXPECT_EQ(ticks.entry("1234567890123"), 2);
    EXPECT_EQ(ticks.entry("01234567890123"), std::nullopt);
}

TEST(StateDict, CountsARuleOnceHoweverOftenItIsUnticked)
{
    StateDict ticks;
    ticks.setTicked(1, false);
    ticks.setTicked(1, false);
    EXPECT_EQ(ticks.countOfTicked(3), 2U);
    ticks.setTicked(2, true);
    EXPECT_EQ(ticks.countOfTicked(3), 2U);
}

TEST(StateDict, UntickingAllReaches2ForEveryRule)
{
    StateDict ticks;
    ticks.setTicked(1, true);
    ticks.setAllTicked(false);
    EXPECT_EQ(ticks.entry("1"), 2);
    EXPECT_EQ(ticks.entry("2"), 2);
    EXPECT_EQ(ticks.countOfTicked(3), 0U);
}

TEST(StateDict, SingleTicksGoOnFromWhatAllWereSetTo)
{
    StateDict ticks;
    ticks.setAllTicked(false);
    ticks.setTicked(2, true);
    ticks.setTicked(3, false);
    EXPECT_TRUE(ticks.isTicked(2));
    EXPECT_FALSE(ticks.isTicked(3));
    EXPECT_EQ(ticks.countOfTicked(3), 1U);
    ticks.setAllTicked(true);
    EXPECT_TRUE(ticks.isTicked(3));
    EXPECT_EQ(ticks.countOfTicked(3), 3U);
}

} // namespace quorvane::workflow
