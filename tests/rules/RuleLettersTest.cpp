#include "rules/PolicyRule.h"
#include "rules/RuleCodes.h"
#include "rules/WatchRule.h"

#include <gtest/gtest.h>

namespace quorvane::rules {

TEST(RuleLetters, FlagsOfAPolicyRuleShowTheFirstBitOnly)
{
    PolicyRule rule;
    for (const auto& [flags, letters] : {std::pair{0U, ""}, {1U, "u"}, {2U, ""}, {3U, "u"}}) {
        rule.setFlags(flags);
        EXPECT_EQ(flagsForPolicyRule(rule), letters) << flags;
    }
}

TEST(RuleLetters, FlagsOfAWatchRuleShowTheSecondBitOnly)
{
    WatchRule rule;
    for (const auto& [flags, letters] : {std::pair{0U, ""}, {1U, ""}, {2U, "s"}, {3U, "s"}}) {
        rule.setFlags(flags);
        EXPECT_EQ(flagsForWatchRule(rule), letters) << flags;
    }
}

TEST(RuleLetters, OperationsOfEitherKindAreItsLetters)
{
    PolicyRule policy;
    policy.setOperations(31);
    WatchRule watch;
    watch.setOperations(18);

    EXPECT_EQ(operationsForRule(policy), "rwcmx");
    EXPECT_EQ(operationsForRule(watch), "wx");
    EXPECT_EQ(operationsForRule(WatchRule()), "");
}

} // namespace quorvane::rules
