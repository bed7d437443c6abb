#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

} // namespace

TEST(RuleRows, WatchRulesStandFirstThenGroupsWhateverTheCaseOfTheirKeys)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /1 /bin/b r\n"
                                       "allow path /2 /bin/A r\n"
                                       "watch path /w2 any r\n"
                                       "allow path /3 /bin/b w\n"
                                       "allow path /4 /bin/_ r\n"
                                       "watch path /w1 any r\n"
                                       "allow path /5 any r\n");

    EXPECT_EQ(store->sortedKeys(),
        (Lines{
            "_:/bin/_:(null):", "A:/bin/A:(null):", "Any Process:Any Process:(null):", "b:/bin/b:(null):"}));
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/w2", "/w1", "/4", "/2", "/5", "/1", "/3"}));
}

TEST(RuleRows, KeysAreOrderedByCodePointNotByLocale)
{
    const test::StoreSandbox sandbox;
    const auto store
        = sandbox.storeOf("allow path /1 \u00C4 r\nallow path /2 z r\nallow path /3 \u00E4b r\n");

    EXPECT_EQ(test::rowPaths(*store), (Lines{"/2", "/1", "/3"}));
}

TEST(RuleRows, PolicyRulesHoldNoWatchRulesAndAreNotSorted)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /2 any r\nwatch path /w any r\nallow path /1 any r\n");
    store->sortIndexUsingDescriptors({{SortKey::path}});

    const auto policies = store->policyRules();

    ASSERT_EQ(policies.size(), 2U);
    EXPECT_EQ(policies[0]->path().view(), "/2");
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/1", "/2", "/w"}));
}

TEST(RuleRows, AWalkVisitsAllRowsOrTheChosenOnesInTheirOrder)
{
    const test::StoreSandbox sandbox;
    std::string text = "watch path /w any r\n";
    for (int number = 0; number < 100; ++number)
        text += "allow path /" + std::to_string(number) + " /bin/" + std::to_string(number % 7) + " r\n";
    const auto store = sandbox.storeOf(text);
    const auto rows = store->rows();
    ASSERT_EQ(rows->count(false), 101U);

    std::size_t visited = 0;
    rows->forEach(false, [&](std::size_t row, const RuleRef& rule) {
        EXPECT_EQ(row, visited++);
        EXPECT_EQ(addressOf(rule), addressOf(rows->at(row, false)));
    });
    EXPECT_EQ(visited, 101U);

    const std::vector<std::size_t> chosen{100, 0, 50};
    std::vector<std::size_t> seen;
    rows->forEach(chosen, false, [&](std::size_t row, const RuleRef& rule) {
        seen.push_back(row);
        EXPECT_EQ(addressOf(rule), addressOf(rows->at(row, false)));
    });
    EXPECT_EQ(seen, chosen);
}

TEST(RuleRows, RowsAreTheStoredRecordsThemselves)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    const auto policy = test::policyRule({.path = "/a", .processName = "any"});
    const auto watch = test::watchRule({.path = "/w", .processName = "any"});
    store->addPolicyRule(policy);
    store->addWatchRule(watch);

    EXPECT_EQ(test::watchAt(*store, 0), watch);
    EXPECT_EQ(test::policyAt(*store, 1), policy);
    EXPECT_EQ(std::get<PolicyRulePtr>(store->ruleAtIndex(1, false)), policy);
    EXPECT_EQ(store->policyRules(), std::vector<PolicyRulePtr>{policy});
}

TEST(RuleRows, SystemRulesAreLeftOutOfTheUsersRows)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("allow path /u1 /bin/z r\nwatch path /u2 any r\n");
    sandbox.writeSystemFile("quorvane.rc", "allow path /s1 /bin/a r\nallow path /s2 /bin/z r\n");
    const auto store = sandbox.load();

    EXPECT_EQ(test::rowPaths(*store, true), (Lines{"/u2", "/s1", "/u1", "/s2"}));
    EXPECT_EQ(test::rowPaths(*store, false), (Lines{"/u2", "/u1"}));
    store->sortIndexUsingDescriptors({{SortKey::path}});
    EXPECT_EQ(test::rowPaths(*store, true), (Lines{"/s1", "/s2", "/u1", "/u2"}));
    EXPECT_EQ(test::rowPaths(*store, false), (Lines{"/u1", "/u2"}));
}

TEST(RuleRows, StoreOfSystemRulesOnlyHasNoUsersRows)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r\nwatch path /b any r\n", true);

    EXPECT_EQ(store->totalRules(false), 0U);
    EXPECT_EQ(store->totalRules(true), 2U);
}

TEST(RuleFilterText, IsSoughtInPathProcessAndPolicyTag)
{
    const test::StoreSandbox sandbox;
    const auto store
        = sandbox.storeOf("allow path /docs /Applications/Safari.app/Contents/MacOS/Safari r \"my tag\"\n"
                          "deny suffix .plist any w other TEAMID 1478000000\n"
                          "watch prefix /watched /bin/seen r\n");
    const struct {
        const char* why;
        const char* text;
        Lines rows;
    } cases[] = {
        {"a process in capitals", "SAFARI", {"/docs"}},
        {"a path", "doc", {"/docs"}},
        {"a path in the middle", "plis", {".plist"}},
        {"a policy rule's tag", "my tag", {"/docs"}},
        {"a watch rule's path", "watched", {"/watched"}},
        {"a watch rule's process", "SEEN", {"/watched"}},
        {"in several fields", "a", {"/watched", ".plist", "/docs"}},
        {"the shown name is not searched", "Any Process", {}},
        {"nor the class", "deny", {}},
        {"nor the type", "suffix", {}},
        {"nor the constraint", "TEAMID", {}},
        {"nor the creation time", "1478", {}},
        {"no text across fields", "/docs/Applications", {}},
        {"not even with what parts them", "docs\n", {}},
        {"nothing finds nothing away", "", {"/watched", ".plist", "/docs"}},
    };
    for (const auto& c : cases) {
        store->applyFilterWithString(c.text);
        EXPECT_EQ(test::rowPaths(*store), c.rows) << c.why;
    }
}

TEST(RuleFilterText, IsNotSoughtInAWatchRulesTag)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /docs /bin/p r \"my tag\"\n"
                                       "watch prefix /watched /bin/seen r \"my tag\"\n");

    store->applyFilterWithString("my tag");
    EXPECT_EQ(test::rowPaths(*store), Lines{"/docs"});
}

TEST(RuleFilterText, NullFieldNeverContainsTheText)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    store->addPolicyRule(test::policyRule({.path = {}, .processName = {}, .tag = {}}));
    store->addWatchRule(test::watchRule({.path = {}, .processName = {}}));

    store->applyFilterWithString("null");
    EXPECT_EQ(store->totalRules(true), 0U);
    store->applyFilterWithString("");
    EXPECT_EQ(store->totalRules(true), 2U);
}

TEST(RuleFilterText, FollowsPeoplesIdeaOfCase)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /Caf\u00E9/\u00C4 any r\nallow path /Cafe any r\n");

    store->applyFilterWithString("CAFE\u0301");
    EXPECT_EQ(test::rowPaths(*store), Lines{"/Caf\u00E9/\u00C4"});
    store->applyFilterWithString("\u00E4");
    EXPECT_EQ(test::rowPaths(*store), Lines{"/Caf\u00E9/\u00C4"});
}

TEST(RuleFilterText, StaysInForceUntilItIsCleared)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a1 any r\nallow path /b any r\n");
    store->applyFilterWithString("a1");
    store->addPolicyRule(test::policyRule({.path = "/a12", .processName = "any"}));
    store->addPolicyRule(test::policyRule({.path = "/b2", .processName = "any"}));

    EXPECT_EQ(test::rowPaths(*store), (Lines{"/a1", "/a12"}));
    EXPECT_EQ(store->policyRules().size(), 2U);
    EXPECT_EQ(store->storedRules(), 4U);
    store->deletePolicyRule(*test::policyAt(*store, 0));
    EXPECT_EQ(test::rowPaths(*store), Lines{"/a12"});
    store->applyFilterWithString("");
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/b", "/a12", "/b2"}));
}

TEST(RuleFilterText, FindsARuleUnderItsNewPath)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /old any r\nallow path /other any r\n");
    store->applyFilterWithString("old");
    ASSERT_EQ(store->totalRules(true), 1U);
    test::policyAt(*store, 0)->setPath("/new");

    store->rebuildRulesCache();
    EXPECT_EQ(store->totalRules(true), 0U);
    store->applyFilterWithString("new");
    EXPECT_EQ(test::rowPaths(*store), Lines{"/new"});
}

TEST(RuleSorting, IsAppliedAgainByEveryRebuild)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r\nallow path /c any r\n");
    store->sortIndexUsingDescriptors({{SortKey::path, false}});
    store->addPolicyRule(test::policyRule({.path = "/b", .processName = "any"}));

    EXPECT_EQ(test::rowPaths(*store), (Lines{"/c", "/b", "/a"}));
    store->sortIndexUsingDescriptors({});
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/c", "/b", "/a"})) << "nothing to sort by";
    store->rebuildRulesCache();
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/a", "/c", "/b"})) << "stored order";
}

TEST(RuleRows, KeptOnesDoNotFollowTheStore)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r\nallow path /b any r\n");
    const auto kept = store->rows();

    store->deletePolicyRule(*test::policyAt(*store, 0));
    store->sortIndexUsingDescriptors({{SortKey::path, false}});
    store->applyFilterWithString("nothing");

    EXPECT_EQ(store->totalRules(true), 0U);
    ASSERT_EQ(kept->count(true), 2U);
    EXPECT_EQ(std::get<PolicyRulePtr>(kept->at(0, true))->path().view(), "/a");
}

TEST(RuleRows, SayWhereWantedRulesStand)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /3 any r\nallow path /1 any r\nallow path /2 any r\n");
    store->sortIndexUsingDescriptors({{SortKey::path}});
    const auto isWanted
        = [](const RuleRef& rule) { return std::get<PolicyRulePtr>(rule)->path().view() != "/2"; };
    EXPECT_EQ(store->rows()->rowsWhere(false, isWanted), (std::vector<std::size_t>{0, 2}));

    test::policyAt(*store, 0)->setTag("changed"); // its former value is kept, but has no row
    store->rebuildRulesCache();
    EXPECT_EQ(store->rows()->rowsWhere(false, isWanted), (std::vector<std::size_t>{0, 2}));
}

TEST(RuleRows, SayWhatTheyHaveInCommonWithFormerOnes)
{
    const test::StoreSandbox sandbox;
    const std::string text = "allow path /1 any r\nallow path /2 any r\nallow path /3 any r\n";
    const auto store = sandbox.storeOf(text);
    const auto common = [&](const RuleRows& former) {
        const RuleRows::Common lengths = store->rows()->commonWith(former, false);
        return std::pair(lengths.start, lengths.end);
    };
    const auto whole = store->rows();
    EXPECT_EQ(common(*whole), std::pair(std::size_t{3}, std::size_t{3}));

    store->deletePolicyRule(*test::policyAt(*store, 1));
    EXPECT_EQ(common(*whole), std::pair(std::size_t{1}, std::size_t{1}));
    EXPECT_EQ(common(*sandbox.storeOf(text)->rows()), std::pair(std::size_t{0}, std::size_t{0}));

    const auto two = store->rows();
    test::policyAt(*store, 0)->setTag("changed");
    store->rebuildRulesCache();
    EXPECT_EQ(common(*two), std::pair(std::size_t{0}, std::size_t{1}));
}

} // namespace quorvane::rules
