#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

PolicyRuleFields simplePolicy(std::string_view path = "/a")
{
    return {.path = path, .processName = "/bin/p", .operations = 1};
}

WatchRuleFields simpleWatch(std::string_view path = "/a")
{
    return {.path = path, .processName = "/bin/p", .operations = 1};
}

} // namespace

TEST(AddRule, AppendsTheVeryObjectAndAsksNothing)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    const auto rule = test::policyRule(simplePolicy());
    const auto twin = test::policyRule(simplePolicy());
    const auto watch = test::watchRule(simpleWatch());
    const auto watchTwin = test::watchRule(simpleWatch());

    EXPECT_TRUE(store->addPolicyRule(rule));
    EXPECT_TRUE(store->addPolicyRule(twin)) << "a duplicate and redundant";
    EXPECT_TRUE(store->addWatchRule(watch));
    EXPECT_TRUE(store->addWatchRule(watchTwin));

    ASSERT_EQ(store->totalRules(true), 4U);
    EXPECT_EQ(test::watchAt(*store, 0), watch);
    EXPECT_EQ(test::watchAt(*store, 1), watchTwin);
    EXPECT_EQ(test::policyAt(*store, 2), rule);
    EXPECT_EQ(test::policyAt(*store, 3), twin);
}

TEST(AddRule, KeepsSequenceCreationAndSystemMark)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /first any r\n");
    PolicyRuleFields fields = simplePolicy();
    fields.sequence = -3;
    fields.created = 77;
    fields.system = true;
    const auto rule = test::policyRule(fields);
    store->addPolicyRule(rule);
    store->addPolicyRule(test::policyRule(simplePolicy("/plain")));

    EXPECT_EQ(rule->sequence(), -3);
    EXPECT_EQ(rule->created(), 77U);
    EXPECT_TRUE(rule->system());
    EXPECT_EQ(test::rowPaths(*store, false), (Lines{"/first", "/plain"}));
    store->addFileContents(sandbox.folder.write("b.rc", "allow path /read any w\n"), false);
    store->rebuildRulesCache();
    EXPECT_EQ(test::policyAt(*store, 1)->sequence(), 1) << "adding uses no sequence number";
}

TEST(AddRule, NewGroupTakesItsPlaceAmongTheOthers)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /c /bin/c r\nallow path /a /bin/a r\n");
    ASSERT_EQ(test::rowPaths(*store), (Lines{"/a", "/c"}));

    store->addPolicyRule(test::policyRule({.path = "/b", .processName = "/bin/B"}));

    EXPECT_EQ(test::rowPaths(*store), (Lines{"/a", "/b", "/c"}));
}

TEST(DeleteRule, RemovesTheFirstEqualOneWhateverTagAndMark)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    const auto first = test::policyRule(simplePolicy());
    const auto second = test::policyRule(simplePolicy());
    first->setTag("tagged");
    first->setSystem(true);
    store->addPolicyRule(test::policyRule(simplePolicy("/other")));
    store->addPolicyRule(first);
    store->addPolicyRule(second);
    EXPECT_EQ(store->firstEqualRule(*second), first);

    EXPECT_TRUE(store->deletePolicyRule(*second));

    ASSERT_EQ(test::rowPaths(*store), (Lines{"/other", "/a"}));
    EXPECT_EQ(test::policyAt(*store, 1), second);
    EXPECT_TRUE(store->deletePolicyRule(*second));
    EXPECT_FALSE(store->deletePolicyRule(*second));
    EXPECT_EQ(store->firstEqualRule(*second), nullptr);
}

TEST(DeleteRule, RemovesTheFirstEqualWatchRuleWhateverTagAndMark)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    const auto first = test::watchRule(simpleWatch());
    const auto second = test::watchRule(simpleWatch());
    first->setTag("tagged");
    first->setSystem(true);
    store->addWatchRule(first);
    store->addWatchRule(second);
    EXPECT_EQ(store->firstEqualRule(*second), first);

    EXPECT_TRUE(store->deleteWatchRule(*second));

    ASSERT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(test::watchAt(*store, 0), second);
}

TEST(DeleteRule, RemovesTheFirstEqualWatchRuleInPlace)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("watch path /a any r\nwatch path /b any r t\nwatch path /c any r\n");
    const WatchRule wanted({.policyType = 1, .path = "/b", .processName = "any", .operations = 1});
    EXPECT_EQ(store->firstEqualRule(wanted), test::watchAt(*store, 1));

    EXPECT_TRUE(store->deleteWatchRule(wanted));
    EXPECT_FALSE(store->deleteWatchRule(wanted));
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/a", "/c"}));
    EXPECT_EQ(store->watchRules().size(), 2U);
}

TEST(DeleteRule, WithoutAnEqualOneNothingChangesAndNothingIsRebuilt)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r\nwatch path /a any r\n");
    const auto rows = store->rows();

    EXPECT_FALSE(store->deletePolicyRule(PolicyRule(simplePolicy("/a")))) << "no such group";
    EXPECT_FALSE(store->deletePolicyRule(PolicyRule({.path = "/a", .processName = "any"}))) << "no such rule";
    EXPECT_FALSE(store->deleteWatchRule(WatchRule(simpleWatch())));

    EXPECT_EQ(store->rows(), rows);
    EXPECT_FALSE(sandbox.emptyStore()->deleteWatchRule(WatchRule(simpleWatch())));
}

TEST(DeleteRule, EmptiedGroupKeepsItsKey)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a /bin/p r\n");
    const PolicyRulePtr rule = test::policyAt(*store, 0);

    EXPECT_TRUE(store->deletePolicyRule(*rule));
    EXPECT_FALSE(store->deletePolicyRule(*rule));

    EXPECT_EQ(store->sortedKeys(), Lines{"p:/bin/p:(null):"});
    EXPECT_EQ(store->totalRules(true), 0U);
    EXPECT_FALSE(store->isRedundant(*rule));
    store->addPolicyRule(rule);
    EXPECT_EQ(test::rowPaths(*store), Lines{"/a"});
    EXPECT_EQ(store->sortedKeys().size(), 1U);
}

TEST(DeleteRule, RuleChangedAfterItWasStoredIsNotFoundUnderItsNewIdentity)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a /bin/p r\nallow path /b /bin/p r\n");
    const PolicyRulePtr renamed = test::policyAt(*store, 0);
    const PolicyRulePtr constrained = test::policyAt(*store, 1);
    renamed->setProcessName("/bin/q");
    constrained->setConstraint("TEAM");

    EXPECT_FALSE(store->deletePolicyRule(*renamed));
    EXPECT_FALSE(store->deletePolicyRule(*constrained));
    EXPECT_EQ(store->totalRules(true), 2U);
    renamed->setProcessName("/bin/p");
    EXPECT_TRUE(store->deletePolicyRule(*renamed));
}

TEST(DeleteRule, RuleChangedWithinItsGroupIsFoundAsItNowIs)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    std::vector<PolicyRulePtr> rules;
    for (int number = 0; number < 40; ++number) {
        rules.push_back(test::policyRule(simplePolicy("/" + std::to_string(number))));
        store->addPolicyRule(rules.back());
    }
    ASSERT_EQ(store->firstEqualRule(*rules[30]), rules[30]);

    rules[30]->setPath("/changed");
    EXPECT_EQ(store->firstEqualRule(PolicyRule(simplePolicy("/30"))), nullptr);
    EXPECT_TRUE(store->deletePolicyRule(PolicyRule(simplePolicy("/changed"))));
    EXPECT_EQ(store->totalRules(true), 39U);
}

TEST(DeleteRule, WatchRuleChangedAfterItWasStoredIsFoundAsItNowIs)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    std::vector<WatchRulePtr> rules;
    for (int number = 0; number < 40; ++number) {
        rules.push_back(test::watchRule(simpleWatch("/" + std::to_string(number))));
        store->addWatchRule(rules.back());
    }
    ASSERT_EQ(store->firstEqualRule(*rules[30]), rules[30]);

    rules[30]->setProcessName("/bin/changed");
    EXPECT_EQ(store->firstEqualRule(WatchRule(simpleWatch("/30"))), nullptr);
    EXPECT_TRUE(store->deleteWatchRule(*rules[30]));
    EXPECT_EQ(store->totalRules(true), 39U);
}

TEST(DeleteRule, NullTextsAreNeverFound)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    const auto policy = test::policyRule({.path = {}, .processName = "any"});
    const auto watch = test::watchRule({.path = "/a", .processName = {}});
    store->addPolicyRule(policy);
    store->addWatchRule(watch);

    EXPECT_FALSE(store->deletePolicyRule(*policy));
    EXPECT_FALSE(store->deleteWatchRule(*watch));
    EXPECT_EQ(store->totalRules(true), 2U);
}

TEST(DeleteRule, RecordOutlivesTheStoresReference)
{
    const test::StoreSandbox sandbox;
    auto store = sandbox.storeOf("allow path /a any r\n");
    const PolicyRulePtr kept = test::policyAt(*store, 0);
    store->deletePolicyRule(*kept);
    store.reset();

    EXPECT_EQ(kept->path().view(), "/a");
}

} // namespace quorvane::rules
