#include "workflow/RuleLikeness.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane {

namespace {

class RuleLikeness : public testing::Test {
protected:
    RuleLikeness()
    {
        store.addWatchRule(watchRule({.path = "/w", .processName = "/bin/a", .tag = "one", .operations = 1}));
        add({.path = "/a", .processName = "/bin/a", .tag = "one"});
        add({.policyClass = 1, .policyType = 2, .path = "/b", .processName = "/bin/b", .tag = "two"});
        add({.path = "/c", .processName = "/bin/c via /bin/a"});
        add({.policyClass = 1, .path = "/d", .processName = "/bin/c", .system = true});
    }
    void add(PolicyRuleFields fields)
    {
        fields.operations = 1;
        store.addPolicyRule(policyRule(std::move(fields)));
    }
    // The paths of the rules that are like those of these rows.
    std::string alike(std::vector<RulesSelection::Range> rows, RuleTrait trait) const
    {
        std::string paths;
        for (const RuleRef& rule : rulesLike({store.rows(), true, std::move(rows)}, trait))
            paths += askRule(rule, [](const auto& record) { return std::string(record.path().view()); });
        return paths;
    }

    RuleManager store{Locations("/nonexistent", "nobody"), silentLog()};
};

} // namespace

TEST_F(RuleLikeness, IsThatOfOneTrait)
{
    EXPECT_EQ(alike({{1, 2}}, RuleTrait::ruleClass), "/a/c");
    EXPECT_EQ(alike({{0, 1}}, RuleTrait::ruleClass), "/w");
    EXPECT_EQ(alike({{2, 3}}, RuleTrait::type), "/b");
    EXPECT_EQ(alike({{3, 4}}, RuleTrait::state), "/d");
    EXPECT_EQ(alike({{0, 1}}, RuleTrait::tag), "/w/a");
    EXPECT_EQ(alike({{3, 4}}, RuleTrait::program), "/d/c");
}

TEST_F(RuleLikeness, IsThatOfAnySelectedRule)
{
    EXPECT_EQ(alike({{0, 1}, {2, 3}}, RuleTrait::tag), "/w/a/b");
    EXPECT_EQ(alike({}, RuleTrait::tag), "");
}

} // namespace quorvane
