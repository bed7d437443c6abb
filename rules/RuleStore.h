#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/ChangeSet.h"
#include "rules/Hashing.h"
#include "rules/PolicyGroup.h"
#include "rules/RuleIndex.h"
#include "rules/RuleList.h"
#include "rules/RuleRef.h"
#include "rules/RulesSnapshot.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace quorvane::rules {

// The rules in memory: watch rules in one list, policy rules by application group, and the rows made of them.
// Everything derived follows each change by difference. For one thread.
//
// What stores or looks at rows throws std::bad_alloc when there is no memory; nothing has changed then.
class RuleStore {
public:
    using Groups = std::unordered_map<std::string, PolicyGroup, TextHash>; // by application group identity

    RuleStore() = default;

    // The group of a rule: made when it is missing, or null.
    PolicyGroup& groupOf(const PolicyRuleFields& rule);
    const PolicyGroup* existingGroupOf(const PolicyRuleFields& rule) const;
    RuleList<WatchRule>& watchRules() { return m_watchRules; }
    const RuleList<WatchRule>& watchRules() const { return m_watchRules; }
    // By key, ordered case-insensitively; those without rules too.
    const std::vector<const Groups::value_type*>& orderedGroups() const;

    // Store the very record at the end; rebuildRows() lets the rows follow.
    void append(const WatchRulePtr& rule) { m_watchRules.append(rule); }
    void append(const PolicyRulePtr& rule) { groupOf(rule->fields()).rules().append(rule); }
    // Remove the first equal rule; false when there is none.
    bool removeFirstEqual(const WatchRule& rule);
    bool removeFirstEqual(const PolicyRule& rule);
    // Remove the very record; false when it is not stored.
    bool remove(const WatchRule& rule);
    bool remove(const PolicyRule& rule);
    // True when the very record is stored.
    bool isStored(const RuleRef& rule) { return listOf(rule).has_value(); }
    // Hand over the first equal record. Only of a store that is about to end: nothing follows.
    WatchRulePtr take(const WatchRuleFields& rule, std::uint64_t hash)
    {
        return m_watchRules.take(rule, hash);
    }
    PolicyRulePtr take(const PolicyRuleFields& rule, std::uint64_t hash);
    // As RuleManager::apply(), but all or nothing.
    ChangeSet apply(const ChangeSet& changes);

    // True when a stored rule that `accepts` answers true for is equal to `rule`, in whatever group.
    bool hasEqual(const PolicyRuleFields& rule, const std::function<bool(const PolicyRule&)>& accepts) const;

    // Calls `use` with every rule in stored order: watch rules, then policy rules by application group.
    template <class Use> void forEachRule(Use use) const
    {
        m_watchRules.forEach(use);
        for (const Groups::value_type* group : orderedGroups())
            group->second.rules().forEach(use);
    }
    // The same with every user rule: the order in which they are written.
    template <class Use> void forEachUserRule(Use use) const
    {
        forEachRule([&use](const auto& rule) {
            if (!rule->fields().system)
                use(rule);
        });
    }
    RulesSnapshot userRulesSnapshot() const;

    // The rows follow the rules when somebody next looks.
    void rebuildRows() { m_rowsAreStale = true; }
    void setSearchText(std::optional<std::string> text);
    void sort(std::vector<SortDescriptor> descriptors);
    // Brought up to date.
    const RuleIndex& index() const;
    // All rules, whatever search text and sort order.
    std::shared_ptr<const RuleRows> storedRows() const;
    // As they are.
    const RuleIndex& presentIndex() const { return m_index; }
    // Search text and sort order of another store.
    void setView(const RuleStore& other);
    std::size_t storedRules() const { return m_index.numbers().stored(); }

private:
    using AnyList = std::variant<RuleList<WatchRule>*, RuleList<PolicyRule>*>;
    struct Plan;

    template <class Rule> bool removeAt(RuleList<Rule>& rules, std::size_t slot);
    Plan planOf(const ChangeSet& changes);
    void perform(Plan& plan) noexcept;
    void addManyAtOnce(Plan& plan) noexcept;
    AnyList listFor(const RuleValue& value);
    std::optional<AnyList> listOf(const RuleRef& rule);
    RuleList<PolicyRule>* listOf(const PolicyRule& rule);
    void dropNewGroups(std::size_t kept) noexcept;
    void numberAfresh() const;
    RuleOrder storedOrder() const;

    // Derived; brought up to date when looked at.
    mutable RuleIndex m_index;
    mutable bool m_rowsAreStale = false;
    mutable AppendOnlyTable<RuleValue> m_values; // by row number; as far as a snapshot has asked
    mutable std::vector<const Groups::value_type*> m_orderedGroups;
    mutable std::vector<const Groups::value_type*> m_newGroups; // not yet among them

    bool m_anyStrays = false;
    mutable Groups m_groups;
    mutable RuleList<WatchRule> m_watchRules{m_index.numbers()};
};

} // namespace quorvane::rules
