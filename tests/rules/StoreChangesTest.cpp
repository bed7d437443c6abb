#include "rules/RuleManager.h"

#include "rules/RuleIdentity.h"
#include "tests/rules/RandomRules.h"
#include "tests/rules/ReferenceStore.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

namespace quorvane::rules {

namespace {

std::vector<RuleRef> rowsOf(const RuleManager& store)
{
    std::vector<RuleRef> rows;
    for (std::size_t row = 0; row < store.totalRules(true); ++row)
        rows.push_back(store.ruleAtIndex(row, true));
    return rows;
}

// A store that applies change sets, and one newly built from the same rules in the same order: incremental
// updates must equal a rebuild.
class Followers {
public:
    explicit Followers(unsigned seed)
        : m_random(seed)
        , m_store(m_sandbox.emptyStore())
    {
    }

    void step()
    {
        const std::vector<RuleRef> before = storedOrder();
        const std::vector<RuleValue> valuesBefore = valuesOf(before);
        const ChangeSet done = m_store->apply(randomChanges());
        if (m_random.below(4) == 0) {
            m_store->apply(done.inverted());
            ASSERT_EQ(storedOrder(), before);
            ASSERT_EQ(valuesOf(storedOrder()), valuesBefore);
        }
        if (m_random.below(3) == 0)
            changeView();
        compareWithFresh();
    }

    std::size_t rules() const { return m_store->storedRules(); }

private:
    // The records in stored order, whatever the view.
    std::vector<RuleRef> storedOrder()
    {
        m_store->applyFilterWithString("");
        m_store->sortIndexUsingDescriptors({});
        m_store->rebuildRulesCache();
        std::vector<RuleRef> rules = rowsOf(*m_store);
        setView(*m_store);
        return rules;
    }

    static std::vector<RuleValue> valuesOf(const std::vector<RuleRef>& rules)
    {
        std::vector<RuleValue> values;
        for (const RuleRef& rule : rules)
            values.push_back(valueOf(rule));
        return values;
    }

    void setView(RuleManager& store) const
    {
        store.applyFilterWithString(m_text);
        store.sortIndexUsingDescriptors(m_descriptors);
        store.rebuildRulesCache();
    }

    void changeView()
    {
        m_text = m_random.oneOf<std::string>({"", "", "USERS", "a", "work", "via"});
        m_descriptors.clear();
        for (std::size_t left = m_random.below(3); left > 0; --left)
            m_descriptors.push_back(
                {m_random.oneOf<SortKey>({SortKey::path, SortKey::tag, SortKey::operations}),
                    m_random.below(2) == 0});
        setView(*m_store);
    }

    RuleValue randomValueLike(const RuleRef& rule)
    {
        if (policyRuleIn(rule) != nullptr)
            return makeRuleValue(m_random.policy());
        return makeRuleValue(m_random.watch());
    }

    ChangeSet::Place randomPlace(const std::vector<RuleRef>& rules)
    {
        switch (m_random.below(4)) {
        case 0:
            return {ChangeSet::Place::start, {}};
        case 1:
            if (!rules.empty())
                return {ChangeSet::Place::behind, m_random.oneOf(rules)};
            return {};
        default:
            return {};
        }
    }

    ChangeSet randomChanges()
    {
        ChangeSet changes;
        const std::vector<RuleRef> rules = rowsOf(*m_store);
        for (std::size_t left = rules.empty() ? 0 : m_random.below(4); left > 0; --left) {
            changes.removed.push_back({m_random.oneOf(rules)});
            if (m_random.below(2) == 0) // an edit
                changes.added.push_back({changes.removed.back().rule,
                    randomValueLike(changes.removed.back().rule), randomPlace(rules)});
        }
        for (std::size_t left = rules.empty() ? 0 : m_random.below(3); left > 0; --left) {
            const RuleRef rule = m_random.oneOf(rules);
            changes.changed.push_back({rule, {}, askValue(valueOf(rule), [this](auto fields) {
                                           fields.tag = m_random.tag();
                                           fields.path = m_random.path();
                                           return RuleValue(makeRuleValue(std::move(fields)));
                                       })});
        }
        for (std::size_t left = m_random.below(4); left > 0; --left) {
            const RuleRef rule
                = m_random.below(4) == 0 ? RuleRef(test::watchRule({})) : RuleRef(test::policyRule({}));
            changes.added.push_back({rule, randomValueLike(rule), randomPlace(rules)});
        }
        return changes;
    }

    void compareWithFresh()
    {
        const auto fresh = m_sandbox.emptyStore();
        for (const RuleRef& rule : storedOrder()) {
            if (const auto* policy = std::get_if<PolicyRulePtr>(&rule))
                fresh->addPolicyRule(*policy);
            else
                fresh->addWatchRule(std::get<WatchRulePtr>(rule));
        }
        setView(*fresh);
        ASSERT_EQ(rowsOf(*m_store), rowsOf(*fresh));
        ASSERT_EQ(m_store->policyRules(), fresh->policyRules());
        for (const RuleRef& rule : rowsOf(*m_store)) {
            if (const PolicyRule* policy = policyRuleIn(rule)) {
                ASSERT_EQ(m_store->coveringRule(*policy), fresh->coveringRule(*policy));
            }
            ASSERT_EQ(m_store->firstEqualRule(rule, {}), fresh->firstEqualRule(rule, {}));
        }
        std::vector<RuleValue> values;
        m_store->userRulesSnapshot().forEach([&](const RuleValue& value) { values.push_back(value); });
        ASSERT_EQ(values, valuesOf(m_store->userRules()));
    }

    const test::StoreSandbox m_sandbox;
    test::RandomRules m_random;
    std::unique_ptr<RuleManager> m_store;
    std::string m_text;
    std::vector<SortDescriptor> m_descriptors;
};

// Stores the same random rules in all of them.
void fill(test::RandomRules& random, const std::vector<RuleManager*>& stores, int rules)
{
    for (int number = 0; number < rules; ++number) {
        const bool isWatch = random.below(8) == 0;
        const WatchRulePtr watch = test::watchRule(random.watch());
        const PolicyRulePtr policy = test::policyRule(random.policy());
        for (RuleManager* store : stores)
            isWatch ? store->addWatchRule(watch) : store->addPolicyRule(policy);
    }
}

const RuleRef& lastPolicyOf(const std::vector<RuleRef>& rules)
{
    return *std::find_if(
        rules.rbegin(), rules.rend(), [](const RuleRef& rule) { return policyRuleIn(rule) != nullptr; });
}

void expectSameAnswers(const RuleManager& one, const RuleManager& other)
{
    ASSERT_EQ(one.allRules(), other.allRules());
    ASSERT_EQ(rowsOf(one), rowsOf(other));
    for (const RuleRef& rule : one.allRules()) {
        if (const PolicyRule* policy = policyRuleIn(rule)) {
            ASSERT_EQ(one.coveringRule(*policy), other.coveringRule(*policy));
        }
        ASSERT_EQ(one.firstEqualRule(rule, {}), other.firstEqualRule(rule, {}));
    }
}

} // namespace

TEST(StoreChanges, WhatFollowsByDifferenceIsWhatIsMadeAnew)
{
    for (unsigned seed = 1; seed <= 10 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Followers followers(seed);
        for (int step = 0; step < 120 && !HasFatalFailure(); ++step)
            followers.step();
        EXPECT_GT(followers.rules(), 10U);
    }
}

TEST(StoreChanges, RemovingAllAndTakingItBackRestoresEveryPlace)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    for (int number = 0; number < 3000; ++number)
        store->addPolicyRule(
            test::policyRule({.path = "/" + std::to_string(number), .processName = "/bin/p"}));
    const std::vector<RuleRef> before = rowsOf(*store);
    ChangeSet changes;
    for (const RuleRef& rule : before)
        changes.removed.push_back({rule});
    const ChangeSet done = store->apply(changes);
    EXPECT_EQ(store->totalRules(true), 0U);
    store->apply(done.inverted());
    EXPECT_EQ(rowsOf(*store), before);
}

// Beyond an eighth of all, rules are removed at once.
TEST(StoreChanges, ManyRulesGoAtOnceAsOneByOne)
{
    for (unsigned seed = 1; seed <= 20 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        test::RandomRules random(seed);
        const test::StoreSandbox sandbox;
        const auto together = sandbox.emptyStore();
        const auto oneByOne = sandbox.emptyStore();
        fill(random, {together.get(), oneByOne.get()}, 300);
        expectSameAnswers(*together, *oneByOne); // which makes the indexes
        const std::vector<RuleRef> before = together->allRules();
        ChangeSet changes;
        const std::size_t share = 2 + random.below(9);
        for (const RuleRef& rule : before) {
            if (random.below(10) < share)
                changes.removed.push_back({rule});
        }
        changes.removed.push_back({test::policyRule({})}); // which is not stored
        changes.removed.push_back(changes.removed.front());
        std::shuffle(changes.removed.begin(), changes.removed.end(), std::mt19937(seed));
        const ChangeSet done = together->apply(changes);
        ASSERT_EQ(done.removed.size(), changes.removed.size() - 2);
        for (const ChangeSet::Removal& removal : changes.removed)
            oneByOne->apply({.removed = {{removal.rule}}});
        expectSameAnswers(*together, *oneByOne);
        const ChangeSet undone = together->apply(done.inverted());
        ASSERT_EQ(together->allRules(), before);
        together->apply(undone.inverted());
        expectSameAnswers(*together, *oneByOne);
    }
}

TEST(StoreChanges, TheRulesThatAnEqualityRemovesAreThoseOfOneSearchAfterTheOther)
{
    for (unsigned seed = 1; seed <= 60 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        test::RandomRules random(seed);
        const test::StoreSandbox sandbox;
        const auto store = sandbox.emptyStore();
        fill(random, {store.get()}, 150);
        std::vector<RuleRef> named;
        const std::size_t share = 6 + random.below(5);
        for (const RuleRef& rule : store->allRules()) { // mostly some groups whole, some in part
            const PolicyRule* policy = policyRuleIn(rule);
            if (policy == nullptr || policy->fields().operations % 2 == 0 || random.below(10) < share)
                named.push_back(rule);
        }
        if (seed % 4 == 0)
            named.emplace_back(test::policyRule(random.policy())); // which is not stored
        if (seed % 4 == 1)
            named.push_back(named.front());
        if (seed % 8 == 2)
            std::get<PolicyRulePtr>(lastPolicyOf(named))->setProcessName("/bin/elsewhere");
        std::shuffle(named.begin(), named.end(), std::mt19937(seed));
        std::unordered_set<const void*> expected;
        for (const RuleRef& rule : named) {
            if (const auto equal = store->firstEqualRule(rule, expected))
                expected.insert(addressOf(*equal));
        }
        std::unordered_set<const void*> found;
        for (const RuleRef& rule : store->firstEqualRules(named))
            ASSERT_TRUE(found.insert(addressOf(rule)).second) << "each is named once";
        ASSERT_EQ(found, expected);
    }
}

TEST(StoreChanges, AReloadKeepsTheRecordsOfRulesThatAreStillThere)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("watch prefix \"/w\" \"/bin/w\" r \"old\"\n"
                           "allow prefix \"/a\" \"/bin/a\" r \"old\"\n"
                           "allow prefix \"/b\" \"/bin/a\" r \"old\"\n");
    const auto store = sandbox.load();
    const std::vector<RuleRef> before = rowsOf(*store);
    const std::int64_t sequence = test::policyAt(*store, 1)->sequence();
    sandbox.writeUserRules("allow prefix \"/new\" \"/bin/a\" r\n"
                           "allow prefix \"/a\" \"/bin/a\" r \"tagged\"\n"
                           "watch prefix \"/w\" \"/bin/w\" r \"tagged\"\n");
    store->reloadCurrentUserConfiguration();
    const std::vector<RuleRef> after = rowsOf(*store);
    ASSERT_EQ(after.size(), 3U);
    EXPECT_EQ(after[0], before[0]);
    EXPECT_EQ(after[2], before[1]);
    EXPECT_EQ(test::watchAt(*store, 0)->tag().view(), "tagged");
    EXPECT_EQ(test::policyAt(*store, 2)->tag().view(), "tagged");
    EXPECT_GT(test::policyAt(*store, 2)->sequence(), sequence);
    const auto gone = std::get<PolicyRulePtr>(before[2]);
    gone->setPath("/elsewhere");
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/w", "/new", "/a"}));
}

TEST(StoreChanges, AReloadedRuleIsAsOldAsTheFileWasWhenItWasReadAgain)
{
    const test::StoreSandbox sandbox;
    const std::string now = std::to_string(std::time(nullptr));
    sandbox.writeUserRules("allow prefix \"/a\" \"/bin/a\" r \"\" \"\" \"" + now + "\"\n");
    const auto store = sandbox.load();
    const PolicyRulePtr rule = test::policyAt(*store, 0);
    rule->setInitialized(static_cast<std::uint64_t>(std::time(nullptr)) + 1000000);
    EXPECT_EQ(rule->getRuleState(), 0);
    store->reloadCurrentUserConfiguration();
    EXPECT_EQ(test::policyAt(*store, 0), rule);
    EXPECT_EQ(rule->getRuleState(), 2);
}

} // namespace quorvane::rules
