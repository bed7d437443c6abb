#include "workflow/RuleLikeness.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

class RuleLikeness : public testing::Test {
protected:
    RuleLikeness()
    {
        store.addWatchRule(
            test::watchRule({.path = "/w", .processName = "/bin/a", .tag = "one", .operations = 1}));
        add({.path = "/a", .processName = "/bin/a", .tag = "one"});
        add({.policyClass = 1, .policyType = 2, .path = "/b", .processName = "/bin/b", .tag = "two"});
        add({.path = "/c", .processName = "/bin/c via /bin/a"});
        add({.policyClass = 1, .path = "/d", .processName = "/bin/c", .system = true});
    }
    void add(rules::PolicyRuleFields fields)
    {
        fields.operations = 1;
        store.addPolicyRule(test::policyRule(std::move(fields)));
    }
    // The paths of the rules that share the trait with those of these rows.
    std::string alike(std::vector<RulesSelection::Range> rows, RuleTrait trait) const
    {
        return pathsOf(rulesLike({store.rows(), true, std::move(rows)}, trait));
    }
    static std::string pathsOf(const std::vector<rules::RuleRef>& rules)
    {
        std::string paths;
        for (const rules::RuleRef& rule : rules)
            paths += visitRule(rule, [](const auto& record) { return std::string(record.path().view()); });
        return paths;
    }

    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
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

TEST_F(RuleLikeness, IsThatOfAProblemOfAnySelectedRule)
{
    const std::vector<rules::RuleRef> rules = store.allRules(); // /w /a /b /d /c
    const auto problemOf = [](const rules::RuleRef& rule, FindingKind kind) {
        return KnownProblem{rule, {kind}};
    };
    ProblemLists::Lists lists;
    lists[static_cast<std::size_t>(FindingKind::redundant)]
        = {problemOf(rules[0], FindingKind::redundant), problemOf(rules[2], FindingKind::redundant)};
    lists[static_cast<std::size_t>(FindingKind::missingPath)]
        = {problemOf(rules[2], FindingKind::missingPath), problemOf(rules[4], FindingKind::missingPath)};
    const ProblemLists problems(lists);
    const auto alike = [&](RulesSelection::Range rows) {
        return pathsOf(rulesWithSameProblem({store.rows(), true, {std::move(rows)}}, problems));
    };
    EXPECT_EQ(alike({0, 1}), "/w/b");
    EXPECT_EQ(alike({2, 3}), "/w/b/c");
    EXPECT_EQ(alike({4, 5}), "/b/c");
    EXPECT_EQ(alike({3, 5}), "/b/c");
    EXPECT_EQ(alike({1, 2}), "");
}

} // namespace quorvane::workflow
