#include "rules/RuleManager.h"

#include "tests/rules/RandomRules.h"
#include "tests/rules/ReferenceStore.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorvane::rules {

namespace {

std::vector<RuleRef> rowsOf(const RuleManager& store, bool includeSystemRules)
{
    std::vector<RuleRef> rows;
    for (std::size_t row = 0; row < store.totalRules(includeSystemRules); ++row)
        rows.push_back(store.ruleAtIndex(row, includeSystemRules));
    return rows;
}

// Drives a store and plain scans through the same steps and compares their results.
class Companions {
public:
    // What the steps came upon, of all companions that share it.
    struct Counts {
        std::size_t redundant = 0;
        std::size_t hiddenEquals = 0;
        std::size_t adopted = 0;
    };

    Companions(unsigned seed, Counts& counts)
        : m_random(seed)
        , m_counts(counts)
        , m_store(test::StoreSandbox().emptyStore())
    {
    }

    void step()
    {
        switch (m_random.below(12)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return addPolicy();
        case 4:
            return addWatch();
        case 5:
            return removePolicy();
        case 6:
            return removeWatch();
        case 7:
            return filter();
        case 8:
            return sort();
        default:
            return changeRule();
        }
    }

    void compareRows() const
    {
        ASSERT_EQ(rowsOf(*m_store, true), m_plain.rows);
        ASSERT_EQ(rowsOf(*m_store, false), m_plain.userRows());
        ASSERT_EQ(m_store->policyRules(), m_plain.policyRules);
        ASSERT_EQ(m_store->sortedKeys(), m_plain.sortedKeys());
    }

    void compareAnswers()
    {
        for (const PolicyRulePtr& rule : m_policies)
            compareAnswersOn(*rule);
        for (int strangers = 0; strangers < 5; ++strangers)
            compareAnswersOn(PolicyRule(m_random.policy()));
        for (const WatchRulePtr& rule : m_plain.watchRules)
            ASSERT_EQ(m_store->firstEqualRule(*rule).get(), m_plain.firstEqual(*rule));
        const WatchRule stranger(m_random.watch());
        ASSERT_EQ(m_store->firstEqualRule(stranger).get(), m_plain.firstEqual(stranger));
    }

    // For freshly rebuilt rows, without forcing the store to rebuild them.
    void compareEqualityAmongPassing()
    {
        m_plain.rebuild();
        m_store->rebuildRulesCache();
        std::vector<PolicyRulePtr> asked = m_policies;
        for (int strangers = 0; strangers < 5; ++strangers)
            asked.push_back(test::policyRule(m_random.policy()));
        for (const PolicyRulePtr& rule : asked) {
            const bool isThere = std::any_of(m_plain.policyRules.begin(), m_plain.policyRules.end(),
                [&](const auto& stored) { return stored->isEqualToPolicyRule(*rule); });
            ASSERT_EQ(m_store->hasEqualPolicyRule(*rule), isThere);
            m_counts.hiddenEquals += !isThere && m_plain.firstEqual(*rule) != nullptr ? 1U : 0U;
        }
    }
    void rebuildRows()
    {
        m_plain.rebuild();
        m_store->rebuildRulesCache();
    }
    // Begins to compute the rows on another thread, or takes what that has found.
    void computeRows()
    {
        if (m_thread.joinable()) {
            m_thread.join();
            m_counts.adopted += m_store->adopt(std::move(*m_computation)) ? 1U : 0U;
        } else if ((m_computation = m_store->longComputation(1))) {
            m_thread = std::jthread([this] { m_computation->run(); });
        }
    }

private:
    void compareAnswersOn(const PolicyRule& rule)
    {
        const PolicyRule* covering = m_plain.coveringRule(rule);
        m_counts.redundant += covering == nullptr ? 0 : 1;
        ASSERT_EQ(m_store->coveringRule(rule), covering);
        ASSERT_EQ(m_store->isRedundant(rule), covering != nullptr);
        ASSERT_EQ(m_store->firstEqualRule(rule).get(), m_plain.firstEqual(rule));
    }

    void addPolicy()
    {
        m_policies.push_back(test::policyRule(m_random.policy()));
        m_plain.add(m_policies.back());
        ASSERT_TRUE(m_store->addPolicyRule(m_policies.back()));
    }

    void addWatch()
    {
        const auto rule = test::watchRule(m_random.watch());
        m_plain.add(rule);
        ASSERT_TRUE(m_store->addWatchRule(rule));
    }

    void removePolicy()
    {
        const PolicyRule rule(m_policies.empty() || m_random.below(3) == 0
                ? m_random.policy()
                : m_policies[m_random.below(m_policies.size())]->fields());
        ASSERT_EQ(m_store->deletePolicyRule(rule), m_plain.remove(rule));
    }

    void removeWatch()
    {
        const WatchRule rule(m_plain.watchRules.empty() || m_random.below(3) == 0
                ? m_random.watch()
                : m_plain.watchRules[m_random.below(m_plain.watchRules.size())]->fields());
        ASSERT_EQ(m_store->deleteWatchRule(rule), m_plain.remove(rule));
    }

    void filter()
    {
        m_plain.searchText
            = m_random.oneOf<std::string>({"", "", "", "USERS", "a", "/", "work", "via", "file", "zz"});
        m_plain.rebuild();
        m_store->applyFilterWithString(m_plain.searchText);
    }

    void sort()
    {
        std::vector<SortDescriptor> descriptors;
        for (std::size_t left = m_random.below(3); left > 0; --left) {
            descriptors.push_back({m_random.oneOf<SortKey>({SortKey::path, SortKey::processName, SortKey::tag,
                                       SortKey::operations, SortKey::created, SortKey::shownClass}),
                m_random.below(2) == 0});
        }
        m_plain.sort(descriptors);
        m_store->sortIndexUsingDescriptors(descriptors);
    }

    // Rows are updated by the next rebuild; queries about rules immediately.
    void changeRule()
    {
        if (m_policies.empty())
            return;
        PolicyRule& rule = *m_policies[m_random.below(m_policies.size())];
        switch (m_random.below(6)) {
        case 0:
        case 1:
            rule.setPath(m_random.path());
            break;
        case 2:
            rule.setConstraint(m_random.constraint());
            break;
        case 3:
            rule.setOperations(m_random.operations());
            break;
        case 4:
            rule.setProcessName(m_random.process());
            break;
        default:
            rule.setTag(m_random.tag());
        }
        if (m_random.below(2) == 0) {
            m_plain.rebuild();
            m_store->rebuildRulesCache();
        }
    }

    test::RandomRules m_random;
    Counts& m_counts;
    test::ReferenceStore m_plain;
    std::unique_ptr<RuleManager> m_store;
    std::vector<PolicyRulePtr> m_policies; // including those deleted since
    std::optional<RowsComputation> m_computation; // of the thread while that runs
    std::jthread m_thread;
};

// Walks with each of the seeds: `compare` after each step is given the number of the step.
template <class Compare>
Companions::Counts walk(unsigned firstSeed, unsigned lastSeed, int steps, const Compare& compare)
{
    Companions::Counts counts;
    for (unsigned seed = firstSeed; seed <= lastSeed && !testing::Test::HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Companions companions(seed, counts);
        for (int step = 0; step < steps && !testing::Test::HasFatalFailure(); ++step) {
            companions.step();
            compare(companions, step);
        }
    }
    return counts;
}

} // namespace

TEST(StoreWalks, RowsAgreeWithPlainWalksAfterEveryStep)
{
    walk(1, 12, 250, [](Companions& companions, int /*step*/) { companions.compareRows(); });
}

TEST(StoreWalks, RowsComputedOnAnotherThreadAgreeWithPlainWalks)
{
    const auto counts = walk(301, 304, 400, [](Companions& companions, int step) {
        companions.rebuildRows();
        if (step % 3 == 0)
            companions.computeRows();
        if (step % 7 == 0)
            companions.compareRows();
    });
    EXPECT_GT(counts.adopted, 100U);
}

TEST(StoreWalks, RedundancyAndEqualityAgreeWithPlainWalks)
{
    const auto counts = walk(101, 108, 600, [](Companions& companions, int step) {
        if (step % 7 == 0)
            companions.compareAnswers();
    });
    EXPECT_GT(counts.redundant, 1000U);
}

TEST(StoreWalks, EqualityAmongRulesThatPassAgreesWithPlainWalks)
{
    const auto counts = walk(201, 208, 400, [](Companions& companions, int step) {
        if (step % 3 == 0)
            companions.compareEqualityAmongPassing();
    });
    EXPECT_GT(counts.hiddenEquals, 1000U) << "equal rules that a search hides are what this is about";
}

TEST(StoreWalks, OneLongGroupIsEmptiedAsAPlainListIs)
{
    test::RandomRules random(77);
    const auto store = test::StoreSandbox().emptyStore();
    test::ReferenceStore plain;
    std::vector<PolicyRulePtr> rules;
    for (int number = 0; number < 300; ++number) {
        rules.push_back(test::policyRule({.path = "/" + std::to_string(random.below(60)),
            .processName = "/bin/p",
            .operations = 1 + static_cast<std::uint32_t>(random.below(3))}));
        store->addPolicyRule(rules.back());
        plain.add(rules.back());
    }
    while (!rules.empty() && !HasFatalFailure()) {
        const std::size_t at = random.below(rules.size());
        const PolicyRule wanted(rules[at]->fields());
        rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(at));
        ASSERT_EQ(store->coveringRule(wanted), plain.coveringRule(wanted));
        ASSERT_TRUE(plain.remove(wanted));
        ASSERT_TRUE(store->deletePolicyRule(wanted));
        ASSERT_EQ(rowsOf(*store, true), plain.rows);
    }
}

} // namespace quorvane::rules
