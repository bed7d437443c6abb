#include "rules/ChangeSet.h"

#include "rules/RuleIdentity.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace quorvane::rules {

namespace {

constexpr const char* twoGroups = "watch prefix \"/w1\" \"/bin/w\" r\n"
                                  "watch prefix \"/w2\" \"/bin/w\" r\n"
                                  "allow prefix \"/a1\" \"/bin/a\" r \"one\"\n"
                                  "allow prefix \"/a2\" \"/bin/a\" r \"two\"\n"
                                  "allow prefix \"/a3\" \"/bin/a\" r \"three\"\n"
                                  "allow prefix \"/b1\" \"/bin/b\" r\n";

using Paths = std::vector<std::string>;

RuleValue changedValue(const RuleRef& rule, const std::function<void(PolicyRuleFields&)>& change)
{
    PolicyRuleFields fields = *std::get<PolicyValue>(valueOf(rule));
    change(fields);
    return makeRuleValue(std::move(fields));
}

RuleRef ruleAt(const RuleManager& store, std::size_t row)
{
    return store.ruleAtIndex(row, true);
}

} // namespace

TEST(ChangeSet, RemovalsChangesAndAdditionsAreDoneAtOnce)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const RuleRef second = ruleAt(*store, 3);
    const RuleRef added = test::policyRule({});
    ChangeSet changes;
    changes.removed.push_back({ruleAt(*store, 0)});
    changes.changed.push_back({second, {}, changedValue(second, [](auto& rule) { rule.tag = "new"; })});
    changes.added.push_back({added, makeRuleValue(PolicyRuleFields{.path = "/a0", .processName = "/bin/a"}),
        {ChangeSet::Place::start, {}}});
    store->apply(changes);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w2", "/a0", "/a1", "/a2", "/a3", "/b1"}));
    EXPECT_EQ(test::policyAt(*store, 3)->tag().view(), "new");
    EXPECT_EQ(ruleAt(*store, 1), added) << "the very record is stored";
    EXPECT_EQ(ruleAt(*store, 3), second) << "a changed record stays where it is";
}

TEST(ChangeSet, TheInverseOfWhatWasDoneRestoresOrderAndValues)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const std::string before = test::rowsAsText(*store, true);
    ChangeSet changes;
    for (const std::size_t row : {0U, 1U, 2U, 3U})
        changes.removed.push_back({ruleAt(*store, row)});
    const RuleRef edited = ruleAt(*store, 3); // removed and added again as another rule of another group
    changes.added.push_back({edited, changedValue(edited, [](auto& rule) { rule.processName = "/bin/b"; })});
    const RuleRef tagged = ruleAt(*store, 5);
    changes.changed.push_back({tagged, {}, changedValue(tagged, [](auto& rule) { rule.tag = "tagged"; })});
    const ChangeSet done = store->apply(changes);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/a3", "/b1", "/a2"}));
    const std::string after = test::rowsAsText(*store, true);
    const ChangeSet undone = store->apply(done.inverted());
    EXPECT_EQ(test::rowsAsText(*store, true), before);
    store->apply(undone.inverted());
    EXPECT_EQ(test::rowsAsText(*store, true), after);
}

TEST(ChangeSet, OnlyWhatWasReallyDoneIsAnswered)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const RuleRef stranger = test::policyRule({.path = "/a1", .processName = "/bin/a", .operations = 1});
    ChangeSet changes;
    changes.removed.push_back({stranger});
    changes.added.push_back({ruleAt(*store, 2), valueOf(ruleAt(*store, 2))});
    EXPECT_TRUE(store->apply(changes).isEmpty()) << "an equal rule is not the record itself";
    EXPECT_EQ(store->totalRules(true), 6U);
}

TEST(ChangeSet, AChangeOfARuleThatIsNotStoredAddsItAtTheEnd)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const RuleRef rule = ruleAt(*store, 2);
    ChangeSet removal;
    removal.removed.push_back({rule});
    store->apply(removal);
    ChangeSet change;
    change.changed.push_back({rule, {}, changedValue(rule, [](auto& fields) { fields.tag = "back"; })});
    const ChangeSet done = store->apply(change);
    EXPECT_TRUE(done.changed.empty());
    EXPECT_EQ(done.added.size(), 1U);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w1", "/w2", "/a2", "/a3", "/a1", "/b1"}));
}

TEST(ChangeSet, AnAdditionBehindARuleThatIsGoneStandsAtTheEnd)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const RuleRef gone = ruleAt(*store, 2);
    ChangeSet changes;
    changes.removed.push_back({gone});
    changes.added.push_back(
        {test::policyRule({}), makeRuleValue(PolicyRuleFields{.path = "/late", .processName = "/bin/a"}),
            {ChangeSet::Place::behind, gone}});
    changes.added.push_back(
        {test::watchRule({}), makeRuleValue(WatchRuleFields{.path = "/between", .processName = "/bin/w"}),
            {ChangeSet::Place::behind, ruleAt(*store, 0)}});
    store->apply(changes);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w1", "/between", "/w2", "/a2", "/a3", "/late", "/b1"}));
}

TEST(ChangeSet, ARuleThatWasEditedInPlaceIsFoundInItsFormerGroup)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const PolicyRulePtr rule = test::policyAt(*store, 2);
    rule->setProcessName("/bin/elsewhere");
    ChangeSet changes;
    changes.removed.push_back({rule});
    EXPECT_EQ(store->apply(changes).removed.size(), 1U);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w1", "/w2", "/a2", "/a3", "/b1"}));
}

// More than a thousand of one list are inserted at once, fewer one by one.
TEST(ChangeSet, ManyRulesComeToTheSamePlacesTogetherAsOneByOne)
{
    const test::StoreSandbox sandbox;
    std::string text = "watch prefix \"/w1\" \"/bin/w\" r\n";
    for (int rule = 0; rule < 5000; ++rule)
        text += "allow prefix \"/" + std::to_string(rule) + "\" \"/bin/" + (rule % 7 < 4 ? "a" : "b")
            + "\" r\n";
    const auto together = sandbox.storeOf(text);
    const auto oneByOne = sandbox.storeOf(text);
    const std::string before = test::rowsAsText(*together, true);
    const auto undone = [](RuleManager& store, std::size_t atOnce) {
        std::mt19937 random(7);
        ChangeSet changes;
        for (const RuleRef& rule : store.userRules()) {
            if (random() % 10 < 7)
                changes.removed.push_back({rule});
        }
        const ChangeSet inverse = store.apply(changes).inverted();
        for (std::size_t from = 0; from < inverse.added.size(); from += atOnce) {
            ChangeSet part;
            part.added.assign(inverse.added.begin() + static_cast<std::ptrdiff_t>(from),
                inverse.added.begin()
                    + static_cast<std::ptrdiff_t>(std::min(from + atOnce, inverse.added.size())));
            EXPECT_EQ(store.apply(part).added.size(), part.added.size());
        }
        return test::rowsAsText(store, true);
    };
    EXPECT_EQ(undone(*together, 10'000), before);
    EXPECT_EQ(undone(*oneByOne, 100), before);
    const RuleRef equal = together->userRules().back();
    EXPECT_EQ(*together->firstEqualRule(equal, {}), equal);
}

TEST(ChangeSet, ManyAdditionsBehindEachOtherAtTheStartAndAtTheEndKeepTheirOrder)
{
    const test::StoreSandbox sandbox;
    const auto store
        = sandbox.storeOf("watch prefix \"/a\" \"/bin/w\" r\nwatch prefix \"/b\" \"/bin/w\" r\n");
    const auto newRule = [](const std::string& path) {
        return std::make_shared<WatchRule>(
            WatchRuleFields{.path = path, .processName = "/bin/w", .operations = 1});
    };
    ChangeSet changes;
    Paths expected;
    RuleRef last = store->userRules().front();
    for (int rule = 0; rule < 600; ++rule) {
        const RuleRef behind = newRule("/behind" + std::to_string(rule));
        const RuleRef start = newRule("/start" + std::to_string(rule));
        changes.added.push_back({behind, valueOf(behind), {ChangeSet::Place::behind, last}});
        changes.added.push_back({start, valueOf(start), {ChangeSet::Place::start, {}}});
        last = behind;
    }
    const RuleRef end = newRule("/end");
    changes.added.push_back({end, valueOf(end)});
    store->apply(changes);
    for (int rule = 599; rule >= 0; --rule)
        expected.push_back("/start" + std::to_string(rule));
    expected.emplace_back("/a");
    for (int rule = 0; rule < 600; ++rule)
        expected.push_back("/behind" + std::to_string(rule));
    expected.insert(expected.end(), {"/b", "/end"});
    EXPECT_EQ(test::rowPaths(*store), expected);
}

TEST(ChangeSet, ASnapshotKeepsTheValuesOfItsMoment)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(twoGroups);
    const RulesSnapshot snapshot = store->userRulesSnapshot();
    test::policyAt(*store, 2)->setPath("/changed");
    store->deletePolicyRule(*test::policyAt(*store, 3));
    Paths paths;
    snapshot.forEach([&](const RuleValue& rule) {
        paths.push_back(askValue(rule, [](const auto& fields) { return std::string(fields.path.view()); }));
    });
    EXPECT_EQ(paths, (Paths{"/w1", "/w2", "/a1", "/a2", "/a3", "/b1"}));
    EXPECT_EQ(snapshot.size(), 6U);
}

TEST(ChangeSet, ARecordInTwoStoresIsFollowedByBoth)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("");
    const auto other = sandbox.storeOf("");
    const PolicyRulePtr rule = test::policyRule({.path = "/a", .processName = "/bin/a"});
    for (int number = 0; number < 40; ++number) {
        const std::string path = "/" + std::to_string(number);
        store->addPolicyRule(test::policyRule({.path = path, .processName = "/bin/a"}));
        other->addPolicyRule(test::policyRule({.path = path, .processName = "/bin/a"}));
    }
    store->addPolicyRule(rule);
    other->addPolicyRule(rule);
    rule->setPath("/b");
    const PolicyRule wanted({.path = "/b", .processName = "/bin/a"});
    EXPECT_EQ(store->firstEqualRule(wanted), rule);
    EXPECT_EQ(other->firstEqualRule(wanted), rule);
    EXPECT_TRUE(store->deletePolicyRule(wanted));
    rule->setPath("/c");
    EXPECT_EQ(other->firstEqualRule(PolicyRule({.path = "/c", .processName = "/bin/a"})), rule);
}

TEST(ChangeSet, ARecordThatIsStoredTwiceGoesOnceTogetherWithManyOthers)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("");
    const PolicyRulePtr twice = test::policyRule({.path = "/twice", .processName = "/bin/a"});
    store->addPolicyRule(twice);
    for (int number = 0; number < 100; ++number)
        store->addPolicyRule(
            test::policyRule({.path = "/" + std::to_string(number), .processName = "/bin/a"}));
    ChangeSet changes;
    for (const RuleRef& rule : store->allRules())
        changes.removed.push_back({rule});
    store->addPolicyRule(twice);
    EXPECT_EQ(store->apply(changes).removed.size(), 101U);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/twice"}));
}

TEST(ChangeSet, ARecordThatAnotherStoreHasRemovedIsRemovedAndAddedAgain)
{
    const test::StoreSandbox sandbox;
    const auto other = sandbox.storeOf("");
    const auto store = sandbox.storeOf(twoGroups);
    const PolicyRulePtr rule = test::policyRule({.path = "/b0", .processName = "/bin/b"});
    other->addPolicyRule(rule);
    store->addPolicyRule(rule);
    other->deletePolicyRule(*rule);
    ChangeSet changes;
    changes.removed.push_back({rule});
    changes.added.push_back({rule, changedValue(rule, [](auto& fields) { fields.processName = "/bin/a"; })});
    store->apply(changes);
    EXPECT_EQ(test::rowPaths(*store), (Paths{"/w1", "/w2", "/a1", "/a2", "/a3", "/b0", "/b1"}));
    EXPECT_TRUE(store->isStored(rule));
    EXPECT_FALSE(other->isStored(rule));
}

} // namespace quorvane::rules
