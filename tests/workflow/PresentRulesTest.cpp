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

    PresentRules present(store, reviewed.rows());
    EXPECT_TRUE(present.countOn(4));
    EXPECT_EQ(present.count(), 1U);
    EXPECT_FALSE(present.countOn(4));
    EXPECT_EQ(present.count(), 2U);
    EXPECT_FALSE(present.countOn(4));
    EXPECT_EQ(present.count(), 2U);
}

TEST(PresentRules, HasNothingToLookAtInAFileWithoutRules)
{
    const RuleManager empty(Locations("/nonexistent", "nobody"), silentLog());
    PresentRules present(empty, empty.rows());
    EXPECT_FALSE(present.countOn(1));
    EXPECT_EQ(present.count(), 0U);
}

} // namespace quorvane
