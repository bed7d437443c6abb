#include "workflow/AccessTree.h"

#include "rules/RuleCodes.h"
#include "tests/rules/RandomRules.h"

#include <gtest/gtest.h>

#include <set>

namespace quorvane::workflow {

namespace {

rules::RuleRef rule(std::int32_t policyClass, const char* path, const char* process = "/bin/sh")
{
    return test::policyRule({.policyClass = policyClass,
        .policyType = rules::PolicyType::prefix,
        .path = path,
        .processName = process,
        .operations = 1});
}

// Each branch, preceded by its parent's, as "title allow/deny/watch programs".
std::string textOf(
    const AccessTree& tree, const std::vector<std::size_t>& branches, const std::string& indent = "")
{
    std::string text;
    for (const std::size_t number : branches) {
        const AccessBranch& branch = tree.branches()[number];
        text += indent + branch.title + " " + std::to_string(branch.counts.allow) + "/"
            + std::to_string(branch.counts.deny) + "/" + std::to_string(branch.counts.watch);
        for (const auto& [program, rules] : branch.programs)
            text += " " + program + ":" + std::to_string(rules);
        text += "\n" + textOf(tree, branch.children, indent + "  ");
    }
    return text;
}

std::string textOf(const AccessTree& tree)
{
    return textOf(tree, tree.top());
}

std::set<const void*> addressesOf(const std::vector<rules::RuleRef>& rules)
{
    std::set<const void*> addresses;
    for (const rules::RuleRef& each : rules)
        addresses.insert(addressOf(each));
    return addresses;
}

} // namespace

TEST(AccessTreeByFolder, PutsFoldersIntoThoseThatHoldThemAndCountsWhatIsInThem)
{
    const auto tree = AccessTree::byFolder({rule(rules::PolicyClass::allow, "/Users/"),
        rule(rules::PolicyClass::deny, "/Users/ann/notes/", "any"),
        rule(rules::PolicyClass::allow, "/Users/ann/notes/", "any"), rule(rules::PolicyClass::deny, "/etc/"),
        test::watchRule({.path = "", .processName = "any"})});
    EXPECT_EQ(textOf(*tree),
        " 0/0/1 any:1\n"
        "/Users/ 2/1/0 any:2 /bin/sh:1\n"
        "  ann/notes/ 1/1/0 any:2\n"
        "/etc/ 0/1/0 /bin/sh:1\n");
    EXPECT_EQ(tree->counts().allow, 2U);
    EXPECT_EQ(tree->counts().watch, 1U);
}

TEST(AccessTreeByProgram, PutsUnderEachProgramThePlacesOfItsRules)
{
    const auto tree = AccessTree::byProgram({rule(rules::PolicyClass::allow, "/a/", "/bin/vi"),
        rule(rules::PolicyClass::deny, "/a/b/", "/bin/vi"), rule(rules::PolicyClass::deny, "/a/", "any")});
    EXPECT_EQ(textOf(*tree),
        "/bin/vi 1/1/0\n"
        "  /a/ 1/1/0\n"
        "    b/ 0/1/0\n"
        "any 0/1/0\n"
        "  /a/ 0/1/0\n");
}

TEST(AccessTreeByProgram, LeavesOutProgramsOfWhichTheMapKnowsNoRule)
{
    EXPECT_TRUE(AccessTree::byProgram({rule(rules::unknownCode, "/a/")})->top().empty());
}

TEST(AccessTree, KnowsTheRulesOfEachBranchAndOfWhatIsInIt)
{
    const std::vector<rules::RuleRef> rules{rule(rules::PolicyClass::allow, "/a/"),
        rule(rules::PolicyClass::deny, "/b/"), rule(rules::PolicyClass::deny, "/a/b/")};
    const auto tree = AccessTree::byFolder(rules);
    EXPECT_EQ(addressesOf(tree->rulesOf(tree->top()[0])), addressesOf({rules[0], rules[2]}));
    EXPECT_EQ(addressesOf(tree->rulesOf(tree->top()[1])), addressesOf({rules[1]}));
}

TEST(AccessTree, HoldsEachRuleOnceHoweverItIsOrdered)
{
    test::RandomRules random(3);
    std::vector<rules::RuleRef> rules;
    std::size_t known = 0;
    for (int count = 0; count < 500; ++count) {
        rules.push_back(count % 3 == 0 ? rules::RuleRef(test::watchRule(random.watch()))
                                       : test::policyRule(random.policy()));
        const rules::PolicyRule* policy = policyRuleIn(rules.back());
        known += policy == nullptr || policy->policyClass() != rules::unknownCode ? 1U : 0U;
    }
    for (const auto& tree : {AccessTree::byFolder(rules), AccessTree::byProgram(rules)}) {
        std::size_t counted = 0;
        std::set<const void*> found;
        for (const std::size_t branch : tree->top()) {
            const AccessCounts& counts = tree->branches()[branch].counts;
            const auto own = tree->rulesOf(branch);
            EXPECT_EQ(own.size(), counts.allow + counts.deny + counts.watch);
            counted += own.size();
            found.merge(addressesOf(own));
        }
        EXPECT_EQ(counted, known);
        EXPECT_EQ(found.size(), known);
    }
}

TEST(AccessTree, IsNotMadeWhenItIsNotWantedAnyMore)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(AccessTree::byFolder({rule(rules::PolicyClass::allow, "/a/")}, stop.get_token()), nullptr);
    EXPECT_EQ(AccessTree::byProgram({rule(rules::PolicyClass::allow, "/a/")}, stop.get_token()), nullptr);
}

} // namespace quorvane::workflow
