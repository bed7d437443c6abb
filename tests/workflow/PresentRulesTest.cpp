#include "workflow/PresentRules.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane {

TEST(PresentRules, CountsSomeAtATimeUntilAllAreLookedAt)
{
    RuleManager reviewed(Locations("/nonexistent", "nobody"), silentLog());
    RuleManager store(Locations("/nonexistent", "nobody"), silentLog());
    for (const char* path : {"/a", "/b", "/c"}) {
        reviewed.addWatchRule(watchRule({.path = path, .processName = "/bin/sh", .operations = 1}));
        reviewed.addPolicyRule(policyRule({.path = path, .processName = "/bin/sh", .operations = 1}));
    }
    store.addWatchRule(watchRule({.path = "/b", .processName = "/bin/sh", .operations = 1}));
    store.addPolicyRule(policyRule({.path = "/c", .processName = "/bin/sh", .tag = "t", .operations = 1}));

    PresentRules present(store, reviewed.rows(), LineEnds::cut);
    EXPECT_TRUE(present.countOn(4));
    EXPECT_EQ(present.count(), 1U);
    EXPECT_FALSE(present.countOn(4));
    EXPECT_EQ(present.count(), 2U);
    EXPECT_FALSE(present.countOn(4));
    EXPECT_EQ(present.count(), 2U);
}

TEST(PresentRules, CountsThoseThatOnlyWholeLinesWouldKeep)
{
    RuleManager store(Locations("/nowhere", "ann"), silentLog());
    RuleManager reviewed(Locations("/nowhere", "ann"), silentLog());
    for (const char* path : {"/a", "/K\u00e4se", "/quote\"/"})
        reviewed.addPolicyRule(policyRule({.path = path, .processName = "any", .operations = 1}));
    PresentRules cut(store, reviewed.rows(), LineEnds::cut);
    EXPECT_FALSE(cut.countOn(10));
    EXPECT_EQ(cut.countOfCut(), 1U);
    PresentRules whole(store, reviewed.rows(), LineEnds::whole);
    EXPECT_FALSE(whole.countOn(10));
    EXPECT_EQ(whole.countOfCut(), 0U);
}

TEST(PresentRules, HasNothingToLookAtInAFileWithoutRules)
{
    const RuleManager empty(Locations("/nonexistent", "nobody"), silentLog());
    PresentRules present(empty, empty.rows(), LineEnds::cut);
    EXPECT_FALSE(present.countOn(1));
    EXPECT_EQ(present.count(), 0U);
}

} // namespace quorvane
