#include "rules/RuleManager.h"

#include <memory>
#include <utility>

namespace quorvane::rules {

RuleManager::RuleManager(platform::Locations locations, platform::Log& log, std::chrono::milliseconds wait)
    : m_locations(std::move(locations))
    , m_log(log)
    , m_wait(wait)
    , m_store(std::make_unique<RuleStore>())
{
}

void RuleManager::rebuildRulesCache()
{
    m_store->rebuildRows();
}

void RuleManager::applyFilterWithString(const std::string& text)
{
    attempt([&] { m_store->setSearchText(text); });
}

void RuleManager::sortIndexUsingDescriptors(std::vector<SortDescriptor> descriptors)
{
    attempt([&] { m_store->sort(std::move(descriptors)); });
}

std::size_t RuleManager::totalRules(bool includeSystemRules) const
{
    return presentRows().count(includeSystemRules);
}

const RuleRef& RuleManager::ruleAtIndex(std::size_t row, bool includeSystemRules) const
{
    return presentRows().at(row, includeSystemRules);
}

std::shared_ptr<const RuleRows> RuleManager::rows() const
{
    attempt([this] { m_store->rows(); });
    return m_store->presentRows();
}

std::optional<RowsComputation> RuleManager::longComputation(std::size_t manyRules) const
{
    std::optional<RowsComputation> computation;
    attempt([&] { computation = m_store->longComputation(manyRules); });
    return computation;
}

std::shared_ptr<const RuleRows> RuleManager::storedRows() const
{
    auto rows = std::make_shared<const RuleRows>();
    attempt([&] { rows = m_store->storedRows(); });
    return rows;
}

bool RuleManager::hasExactly(const RuleRows& stored) const
{
    return m_store->hasExactly(stored);
}

std::vector<PolicyRulePtr> RuleManager::policyRules() const
{
    std::vector<PolicyRulePtr> rules;
    attempt([&] { rules = m_store->passingPolicyRules(); });
    return rules;
}

bool RuleManager::hasEqualPolicyRule(const PolicyRule& rule) const
{
    bool isThere = false;
    attempt([&] {
        isThere = m_store->hasEqual(
            rule.fields(), [this](const PolicyRule& stored) { return m_store->passes(stored); });
    });
    return isThere;
}

std::vector<std::string> RuleManager::sortedKeys() const
{
    std::vector<std::string> keys;
    attempt([&] {
        for (const RuleStore::Groups::value_type* group : m_store->orderedGroups())
            keys.push_back(group->first);
    });
    return keys;
}

bool RuleManager::addWatchRule(const WatchRulePtr& rule)
{
    rebuildRulesCache();
    return appendWatchRule(rule);
}

bool RuleManager::appendWatchRule(const WatchRulePtr& rule)
{
    return attempt([&] { m_store->append(rule); });
}

bool RuleManager::addPolicyRule(const PolicyRulePtr& rule)
{
    rebuildRulesCache();
    return attempt([&] { m_store->append(rule); });
}

bool RuleManager::deleteWatchRule(const WatchRule& rule)
{
    return m_store->removeFirstEqual(rule);
}

bool RuleManager::deletePolicyRule(const PolicyRule& rule)
{
    bool isDone = false;
    attempt([&] { isDone = m_store->removeFirstEqual(rule); });
    return isDone;
}

bool RuleManager::takeOutWatchRule(const WatchRule& rule)
{
    return m_store->remove(rule) || deleteWatchRule(rule);
}

bool RuleManager::takeOutPolicyRule(const PolicyRule& rule)
{
    bool isDone = false;
    attempt([&] { isDone = m_store->remove(rule); });
    return isDone || deletePolicyRule(rule);
}

WatchRulePtr RuleManager::firstEqualRule(const WatchRule& rule) const
{
    return m_store->watchRules().firstEqual(rule);
}

PolicyRulePtr RuleManager::firstEqualRule(const PolicyRule& rule) const
{
    PolicyRulePtr equal;
    attempt([&] {
        const PolicyGroup* group = m_store->existingGroupOf(rule.fields());
        equal = group == nullptr ? nullptr : group->rules().firstEqual(rule);
    });
    return equal;
}

const PolicyRule* RuleManager::coveringRule(const PolicyRule& rule) const
{
    const PolicyRule* covering = nullptr;
    attempt([&] {
        const PolicyGroup* group = m_store->existingGroupOf(rule.fields());
        covering = group == nullptr ? nullptr : group->firstCovering(rule);
    });
    return covering;
}

ChangeSet RuleManager::apply(const ChangeSet& changes)
{
    ChangeSet done;
    attempt([&] { done = applied(changes); });
    return done;
}

ChangeSet RuleManager::apply(ChangeSet&& changes)
{
    ChangeSet done;
    attempt([&] { done = applied(std::move(changes)); });
    return done;
}

ChangeSet RuleManager::applied(ChangeSet changes)
{
    if (!changes.whole) {
        m_exchange.dropUnneeded();
        return m_store->apply(std::move(changes));
    }
    if (m_exchange.perform(m_store, *changes.whole))
        return changes;
    return m_store->apply(ruleByRule(*changes.whole));
}

std::optional<ChangeSet> RuleManager::removalOfAllUserRules() const
{
    std::optional<ChangeSet> removal;
    attempt([&] {
        if (!m_store->canRemoveAllAtOnce())
            return;
        const auto rules = std::make_shared<const WholeRules>(
            WholeRules{m_store->storedRows(), m_store->userRulesSnapshot()});
        removal.emplace();
        if (rules->values.size() > 0)
            removal->whole = ChangeSet::Whole{true, rules};
    });
    return removal;
}

std::vector<RuleRef> RuleManager::allRules() const
{
    std::vector<RuleRef> rules;
    attempt([&] { m_store->forEachRule([&rules](const auto& rule) { rules.emplace_back(rule); }); });
    return rules;
}

std::vector<RuleRef> RuleManager::userRules() const
{
    std::vector<RuleRef> rules;
    m_store->forEachUserRule([&rules](const auto& rule) { rules.emplace_back(rule); });
    return rules;
}

RulesSnapshot RuleManager::userRulesSnapshot() const
{
    return m_store->userRulesSnapshot();
}

bool RuleManager::isStored(const RuleRef& rule) const
{
    bool isStored = false;
    attempt([&] { isStored = m_store->isStored(rule); });
    return isStored;
}

std::optional<RuleRef> RuleManager::firstEqualRule(
    const RuleRef& rule, const std::unordered_set<const void*>& excluded) const
{
    std::optional<RuleRef> equal;
    attempt([&] {
        equal = m_store->firstEqual(
            rule, [&excluded](const void* record) { return !excluded.contains(record); });
    });
    return equal;
}

std::vector<RuleRef> RuleManager::firstEqualRules(const std::vector<RuleRef>& rules) const
{
    std::vector<RuleRef> equal;
    attempt([&] { equal = m_store->firstEqualRules(rules); });
    return equal;
}

// The previous rows when there is no memory for new ones.
const RuleRows& RuleManager::presentRows() const
{
    attempt([this] { m_store->rows(); });
    return *m_store->presentRows();
}

} // namespace quorvane::rules
