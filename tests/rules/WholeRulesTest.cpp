#include "rules/WholeRules.h"

#include "tests/rules/RandomRules.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace quorvane::rules {

namespace {

using Paths = std::vector<std::string>;

// User and system rules stand between each other in one of the groups.
class WholeRulesTest : public testing::Test {
protected:
    WholeRulesTest()
    {
        add(test::watchRule({.path = "/w", .processName = "/bin/w", .operations = 1}));
        for (const char* path : {"/a1", "/s1", "/a2", "/s2", "/a3"})
            add(test::policyRule(
                {.path = path, .processName = "/bin/a", .operations = 1, .system = path[1] == 's'}));
        add(test::policyRule({.path = "/b", .processName = "/bin/b", .tag = "tagged", .operations = 1}));
    }
    void add(const PolicyRulePtr& rule) const { store->addPolicyRule(rule); }
    void add(const WatchRulePtr& rule) const { store->addWatchRule(rule); }

    // Removes all user rules at once.
    ChangeSet removed() const { return store->apply(store->removalOfAllUserRules().value()); }
    std::string rows() const { return test::rowsAsText(*store, true); }
    PolicyRulePtr recordOf(const std::string& path) const
    {
        for (const RuleRef& rule : store->allRules()) {
            const auto* policy = std::get_if<PolicyRulePtr>(&rule);
            if (policy != nullptr && (*policy)->path().view() == path)
                return *policy;
        }
        return nullptr;
    }

    const test::StoreSandbox sandbox;
    const std::unique_ptr<RuleManager> store = sandbox.emptyStore();
};

} // namespace

TEST_F(WholeRulesTest, AllRulesOfTheUserGoAndTheSystemsStay)
{
    const PolicyRulePtr user = recordOf("/a1");
    const PolicyRulePtr system = recordOf("/s1");
    const auto keys = store->sortedKeys();
    const ChangeSet done = removed();
    EXPECT_TRUE(done.whole && !done.isEmpty());
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/s1", "/s2"}));
    EXPECT_EQ(store->storedRules(), 2U);
    EXPECT_TRUE(store->isStored(system));
    EXPECT_FALSE(store->isStored(user));
    EXPECT_EQ(store->userRulesSnapshot().size(), 0U);
    EXPECT_EQ(store->sortedKeys(), keys) << "groups stay, also those that have become empty";
}

TEST_F(WholeRulesTest, TheyComeBackAsTheyWereAndGoAgain)
{
    const std::string before = rows();
    const PolicyRulePtr user = recordOf("/a2");
    const ChangeSet undone = store->apply(removed().inverted());
    EXPECT_EQ(rows(), before);
    EXPECT_TRUE(undone.whole) << "none of the rules was visited";
    EXPECT_TRUE(store->isStored(user)) << "the very records are back";
    EXPECT_EQ(store->firstEqualRule(*user), user);
    const ChangeSet redone = store->apply(undone.inverted());
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/s1", "/s2"}));
    store->apply(redone.inverted());
    EXPECT_EQ(rows(), before);
}

TEST_F(WholeRulesTest, SearchAndOrderOfTheMeantimeHoldWhenTheyComeBack)
{
    store->sortIndexUsingDescriptors({{SortKey::path, true}});
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/a1", "/a2", "/a3", "/b", "/s1", "/s2", "/w"}));
    const ChangeSet done = removed();
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/s1", "/s2"}));
    store->sortIndexUsingDescriptors({{SortKey::path, false}});
    store->applyFilterWithString("/a");
    store->apply(done.inverted());
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/s2", "/s1", "/a3", "/a2", "/a1"}))
        << "the system's contain the text in the path of their program";
    EXPECT_EQ(store->searchText(), "/a");
}

TEST_F(WholeRulesTest, GroupsOfTheMeantimeStayWhenTheyComeBack)
{
    const ChangeSet done = removed();
    const PolicyRulePtr passing = test::policyRule({.path = "/x", .processName = "/bin/new"});
    add(passing);
    store->deletePolicyRule(*passing);
    EXPECT_TRUE(store->apply(done.inverted()).whole);
    const auto keys = store->sortedKeys();
    EXPECT_EQ(std::count(keys.begin(), keys.end(), "new:/bin/new:(null):"), 1);
}

TEST_F(WholeRulesTest, ARuleThatWasChangedWhileItWasGoneComesBackAsItWas)
{
    const std::string before = rows();
    const PolicyRulePtr rule = recordOf("/b");
    const ChangeSet done = removed();
    rule->setTag("changed");
    EXPECT_FALSE(store->apply(done.inverted()).whole);
    EXPECT_EQ(rows(), before) << "each between the system rules where it stood";
}

TEST_F(WholeRulesTest, ARuleThatWasSavedAgainMeanwhileIsNotPutBackTwice)
{
    const PolicyRulePtr rule = recordOf("/b");
    const ChangeSet done = removed();
    add(rule);
    const ChangeSet undone = store->apply(done.inverted());
    EXPECT_EQ(undone.added.size(), 4U);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w", "/a1", "/s1", "/a2", "/s2", "/a3", "/b"}));
    rule->setPath("/changed");
    EXPECT_EQ(store->firstEqualRule(*rule), rule) << "no list that is gone follows its changes";
}

TEST_F(WholeRulesTest, WhatWasAddedMeanwhileStays)
{
    const ChangeSet done = removed();
    add(test::policyRule({.path = "/later", .processName = "/bin/b", .operations = 1}));
    const ChangeSet undone = store->apply(done.inverted());
    EXPECT_EQ(undone.added.size(), 5U);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w", "/a1", "/s1", "/a2", "/s2", "/a3", "/b", "/later"}));
    store->apply(undone.inverted());
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/s1", "/s2", "/later"}));
}

TEST_F(WholeRulesTest, ARemovalTakesNoRuleThatCameAfterItWasMade)
{
    const ChangeSet removal = store->removalOfAllUserRules().value();
    add(test::policyRule({.path = "/later", .processName = "/bin/b", .operations = 1}));
    EXPECT_EQ(store->apply(removal).removed.size(), 5U);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/s1", "/s2", "/later"}));
}

TEST_F(WholeRulesTest, OtherSystemRulesOfTheMeantimeStayInForce)
{
    const ChangeSet done = removed();
    store->deletePolicyRule(*recordOf("/s1"));
    add(test::policyRule({.path = "/s3", .processName = "/bin/a", .operations = 1, .system = true}));
    store->apply(done.inverted());
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w", "/a1", "/s2", "/a3", "/s3", "/a2", "/b"}))
        << "what stood behind a rule that is gone stands at the end";
}

// Each of these survives when the first equal rule of each is deleted, or counts twice.
TEST_F(WholeRulesTest, RulesThatADeletionOfEachMightLeaveAreNotRemovedAtOnce)
{
    EXPECT_TRUE(store->removalOfAllUserRules());
    const auto refusedWith = [](const auto& prepare) {
        const auto other = test::StoreSandbox().emptyStore();
        const PolicyRulePtr rule = test::policyRule({.path = "/a", .processName = "/bin/a", .operations = 1});
        other->addPolicyRule(rule);
        EXPECT_TRUE(other->removalOfAllUserRules());
        prepare(*other, rule);
        return !other->removalOfAllUserRules();
    };
    using Ptr = PolicyRulePtr;
    EXPECT_TRUE(refusedWith([](RuleManager& other, const Ptr& rule) { other.addPolicyRule(rule); }));
    EXPECT_TRUE(refusedWith([](RuleManager&, const Ptr& rule) { rule->setProcessName("/bin/b"); }));
    EXPECT_TRUE(refusedWith([](RuleManager&, const Ptr& rule) { rule->setPath({}); }));
    EXPECT_TRUE(refusedWith([](RuleManager& other, const Ptr& rule) {
        PolicyRuleFields fields = rule->fields();
        fields.system = true;
        other.addPolicyRule(test::policyRule(fields));
    }));
    EXPECT_TRUE(refusedWith([](RuleManager& other, const Ptr&) {
        other.addPolicyRule(test::policyRule({.path = "/a", .processName = {}}));
    }));
    EXPECT_TRUE(refusedWith([](RuleManager& other, const Ptr&) {
        other.addPolicyRule(test::policyRule({.path = "/a", .processName = "/b", .constraint = {}}));
    }));
    EXPECT_TRUE(refusedWith([](RuleManager& other, const Ptr&) {
        ChangeSet change;
        change.added.push_back({test::watchRule({}), makeRuleValue(WatchRuleFields{.processName = "/b"})});
        other.apply(change);
    }));
}

TEST_F(WholeRulesTest, RulesThatNoChangePutsBackAreDestroyedWithTheNextOne)
{
    std::weak_ptr<PolicyRule> gone = recordOf("/b");
    {
        const ChangeSet done = removed();
        EXPECT_FALSE(gone.expired());
    }
    ChangeSet next;
    next.added.push_back({test::watchRule({}), makeRuleValue(WatchRuleFields{.path = "/next"})});
    store->apply(next);
    EXPECT_TRUE(gone.expired());
}

TEST_F(WholeRulesTest, AReloadInBetweenLosesNothing)
{
    sandbox.writeUserRules(test::fileLine("/one", "mine") + test::fileLine("/two"));
    sandbox.writeSystemFile("quorvane.rc", "allow prefix \"/system/\" \"/bin/sh\" r\n");
    const auto loaded = sandbox.load();
    const std::string before = test::rowsAsText(*loaded, true);
    const ChangeSet done = loaded->apply(loaded->removalOfAllUserRules().value());
    sandbox.writeUserRules("");
    loaded->reloadCurrentUserConfiguration();
    EXPECT_EQ(test::rowPaths(*loaded), Paths{"/system/"});
    const ChangeSet undone = loaded->apply(done.inverted());
    EXPECT_EQ(test::rowsAsText(*loaded, true), before);
    sandbox.writeUserRules(test::fileLine("/one", "mine") + test::fileLine("/three"));
    loaded->reloadCurrentUserConfiguration();
    loaded->apply(undone.inverted());
    EXPECT_EQ(test::rowPaths(*loaded), (Paths{"/three", "/system/"}));
}

// Whatever stands in a store, and whatever happens while its rules are gone: the result is that of removals
// and additions of each.
TEST(WholeRules, AreRemovedAndPutBackAsEachForItself)
{
    std::size_t atOnce = 0;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        const test::StoreSandbox sandbox;
        const auto together = sandbox.emptyStore();
        const auto each = sandbox.emptyStore();
        test::RandomRules random(seed);
        std::vector<PolicyRulePtr> pairs; // of `together` and `each`
        for (std::size_t count = random.below(60); count > 0; --count) {
            PolicyRuleFields fields = random.policy();
            if (fields.path.isNull() || fields.processName.isNull() || fields.constraint.isNull())
                fields.path = fields.processName = fields.constraint = "x";
            pairs.push_back(test::policyRule(fields));
            together->addPolicyRule(pairs.back());
            pairs.push_back(test::policyRule(fields));
            each->addPolicyRule(pairs.back());
        }
        const auto same = [&] {
            ASSERT_EQ(test::rowsAsText(*together, true), test::rowsAsText(*each, true)) << "seed " << seed;
            ASSERT_EQ(test::rowsAsText(*together, false), test::rowsAsText(*each, false));
            ASSERT_EQ(together->sortedKeys(), each->sortedKeys());
        };
        ChangeSet removals;
        for (const RuleRef& rule : each->firstEqualRules(each->userRules()))
            removals.removed.push_back({rule});
        const auto removal = together->removalOfAllUserRules();
        if (!removal)
            continue;
        ChangeSet wholeDone = together->apply(*removal);
        ChangeSet eachDone = each->apply(removals);
        same();
        const std::size_t place = pairs.empty() ? 0 : 2 * random.below(pairs.size() / 2);
        if (!pairs.empty() && random.below(3) == 0) {
            pairs[place]->setTag("meanwhile");
            pairs[place + 1]->setTag("meanwhile");
        }
        if (random.below(3) == 0) {
            const PolicyRuleFields fields{.path = "/new", .processName = "/bin/a", .operations = 1};
            together->addPolicyRule(test::policyRule(fields));
            each->addPolicyRule(test::policyRule(fields));
        }
        for (int step = 0; step < 3; ++step) { // undo, redo, undo
            wholeDone = together->apply(wholeDone.inverted());
            eachDone = each->apply(eachDone.inverted());
            atOnce += wholeDone.whole ? 1U : 0U;
            same();
        }
    }
    EXPECT_GT(atOnce, 50U) << "most must have been removed and put back at once";
}

} // namespace quorvane::rules
