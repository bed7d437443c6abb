#include "workflow/RulesSelection.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

class Selected : public testing::Test {
protected:
    Selected()
    {
        store.addWatchRule(test::watchRule({.path = "/w", .processName = "any", .operations = 1}));
        for (const char* process : {"/bin/a", "/bin/b", "/bin/c", "/bin/d", "/bin/e", "/bin/f"})
            store.addPolicyRule(test::policyRule({.path = "/", .processName = process, .operations = 1}));
        store.addPolicyRule(test::policyRule(
            {.policyClass = 1, .path = "/s", .processName = "/bin/g", .operations = 1, .system = true}));
    }
    RulesSelection rows(std::vector<RulesSelection::Range> ranges) const
    {
        return {store.rows(), true, std::move(ranges)};
    }

    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
};

} // namespace

using RulesSelectionTest = Selected;

TEST_F(RulesSelectionTest, AnswersARuleOnlyWhenItIsTheOnlyOne)
{
    EXPECT_EQ(RulesSelection().onlyRule(), std::nullopt);
    EXPECT_EQ(rows({{0, 2}}).onlyRule(), std::nullopt);
    EXPECT_EQ(rows({{2, 3}}).onlyRule(), store.ruleAtIndex(2, true));
}

TEST_F(RulesSelectionTest, NamesClassesAndProgramsOfTheSelectedRulesAlone)
{
    EXPECT_EQ(rows({{0, 1}, {3, 4}}).count(), 2U);
    EXPECT_EQ(
        selectionSummary(rows({{0, 1}, {3, 4}})), "2 rules: 1 allow, 1 watch. Programs: Any Process, c.");
}

TEST_F(RulesSelectionTest, CountsSystemRulesAndProgramsBeyondTheFirstFew)
{
    EXPECT_EQ(selectionSummary(rows({{1, 8}})),
        "7 rules: 6 allow, 1 deny; 1 of the system, which stay as they are. Programs: a, b, c, d, e and 2 "
        "more.");
}

} // namespace quorvane::workflow
