#include "rules/RulesDiff.h"

#include "rules/RuleIdentity.h"
#include "tests/rules/RuleLists.h"

#include <gtest/gtest.h>

namespace quorvane::rules {

namespace {

std::string shown(const RulesDifference& difference)
{
    std::string text
        = "+ " + test::namesOf(difference.added) + " | - " + test::namesOf(difference.removed) + " |";
    for (const auto& [before, after] : difference.changed)
        text += " " + test::nameOf(before) + "=>" + test::nameOf(after);
    return text;
}

std::string differenceOf(const std::string& before, const std::string& after)
{
    return shown(rulesDifference(test::namedRules(before), test::namedRules(after)));
}

bool holdsEqual(const test::RuleValues& rules, const RuleValue& rule)
{
    return std::any_of(
        rules.begin(), rules.end(), [&](const RuleValue& other) { return isEqualRule(rule, other); });
}

} // namespace

TEST(RulesDifference, NamesRulesInTheOrderOfTheirLists)
{
    EXPECT_EQ(differenceOf("w1 a b c", "d c:x w2 b@5 w1"), "+ d w2 | - a | c=>c:x b=>b@5");
    EXPECT_EQ(differenceOf("a b", "b a"), "+  | -  |");
    EXPECT_EQ(differenceOf("", ""), "+  | -  |");
}

TEST(RulesDifference, DoesNotCountHowOftenAnEqualRuleStands)
{
    EXPECT_EQ(differenceOf("a a b", "a b b"), "+  | -  |");
    EXPECT_EQ(differenceOf("c c", "d d"), "+ d | - c |");
}

TEST(RulesDifference, ComparesTheFirstOfEqualRules)
{
    EXPECT_EQ(differenceOf("a:x a:y", "a:x a:z"), "+  | -  |");
    EXPECT_EQ(differenceOf("a:x a:y", "a:y a:x"), "+  | -  | a:x=>a:y");
}

TEST(RulesDifference, TellsANullTagFromAnEmptyOne)
{
    const RuleValue null = makeRuleValue(WatchRuleFields{.path = "w", .processName = "any", .tag = {}});
    const RuleValue empty = makeRuleValue(WatchRuleFields{.path = "w", .processName = "any", .tag = ""});

    EXPECT_EQ(rulesDifference({null}, {empty}).changed.size(), 1U);
    EXPECT_TRUE(rulesDifference({null}, {null}).isEmpty());
}

TEST(RulesDifference, TakesARuleWithoutAPathForTheSameOnlyWhereItIsTheSameValue)
{
    const RuleValue rule = makeRuleValue(PolicyRuleFields{});
    const RuleValue other = makeRuleValue(PolicyRuleFields{});

    EXPECT_TRUE(rulesDifference({rule}, {rule}).isEmpty());
    EXPECT_EQ(rulesDifference({rule}, {other}).added.size(), 1U);
    EXPECT_EQ(rulesDifference({rule}, {other}).removed.size(), 1U);
}

TEST(RulesDifference, AgreesWithAWalkOfBothLists)
{
    test::RandomRules random(61);
    for (int round = 0; round < 1500; ++round) {
        const test::RuleValues before = randomRuleList(random, 9);
        const test::RuleValues after = randomRuleList(random, 9);
        RulesDifference expected;
        for (std::size_t i = 0; i < after.size(); ++i) {
            if (holdsEqual({after.begin(), after.begin() + static_cast<std::ptrdiff_t>(i)}, after[i]))
                continue;
            const auto earlier = std::find_if(before.begin(), before.end(),
                [&](const RuleValue& rule) { return isEqualRule(rule, after[i]); });
            if (earlier == before.end())
                expected.added.push_back(after[i]);
            else if (!hasSameMarks(*earlier, after[i]))
                expected.changed.emplace_back(*earlier, after[i]);
        }
        for (const RuleValue& rule : before) {
            if (!holdsEqual(after, rule) && !holdsEqual(expected.removed, rule))
                expected.removed.push_back(rule);
        }
        ASSERT_EQ(shown(rulesDifference(before, after)), shown(expected))
            << test::namesOf(before) << " to " << test::namesOf(after);
    }
}

} // namespace quorvane::rules
