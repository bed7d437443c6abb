#pragma once

#include "rules/AddressSet.h"
#include "rules/AppendOnlyTable.h"
#include "rules/ChangeSet.h"
#include "rules/Hashing.h"
#include "rules/PolicyGroup.h"
#include "rules/RowsComputation.h"
#include "rules/RuleExceptions.h"
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

// The rules in memory: watch rules in one list, policy rules by application group, and the rows derived from
// them. All derived data is updated incrementally. One thread only.
//
// Operations that store rules or access rows throw std::bad_alloc; then nothing has changed.
class RuleStore {
public:
    using Groups = std::unordered_map<std::string, PolicyGroup, TextHash>; // by application group identity

    RuleStore() = default;

    // The group of a rule; the first creates it when missing, the second returns null.
    PolicyGroup& groupOf(const PolicyRuleFields& rule);
    const PolicyGroup* existingGroupOf(const PolicyRuleFields& rule) const;
    RuleList<WatchRule>& watchRules() { return m_watchRules; }
    const RuleList<WatchRule>& watchRules() const { return m_watchRules; }
    // By key, ordered case-insensitively; including groups without rules.
    const std::vector<const Groups::value_type*>& orderedGroups() const;

    // Fetches into the processor's caches what storing a rule with these properties and this identityHash()
    // will need: call it for steps 0 to 3, with other work between them.
    void prefetch(const PolicyRuleFields& rule, std::uint64_t hash, std::size_t step) const;

    // Store the record itself at the end; call rebuildRows() afterwards.
    void append(const WatchRulePtr& rule) { append(m_watchRules, rule); }
    void append(const PolicyRulePtr& rule) { append(groupOf(rule->fields()).rules(), rule); }
    // Remove the first equal rule; false when there is none.
    bool removeFirstEqual(const WatchRule& rule);
    bool removeFirstEqual(const PolicyRule& rule);
    // Remove the record itself; false when it is not stored.
    bool remove(const WatchRule& rule);
    bool remove(const PolicyRule& rule);
    // True when the record itself is stored.
    bool isStored(const RuleRef& rule) const { return listOf(rule).has_value(); }
    // Move out the first equal record; null when there is none. Only for a store about to be destroyed:
    // nothing else is updated.
    WatchRulePtr take(const WatchRuleFields& rule, std::uint64_t hash)
    {
        return m_watchRules.take(rule, hash);
    }
    PolicyRulePtr take(const PolicyRuleFields& rule, std::uint64_t hash);
    // As RuleManager::apply(), but for a change of whole rules; all or nothing when it throws.
    ChangeSet apply(ChangeSet changes);

    // The first stored rule that `rule` is equal to and whose address `accepts`; none when there is none.
    std::optional<RuleRef> firstEqual(
        const RuleRef& rule, const std::function<bool(const void* record)>& accepts) const;
    // See RuleManager.
    std::vector<RuleRef> firstEqualRules(const std::vector<RuleRef>& rules) const;

    // True when some group has a rule equal to `rule` for which `accepts` is true.
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
    // See RuleManager.
    void indexLargeGroups() const;

    // Marks the rows as stale; they are made anew at the next access.
    void rebuildRows() { m_rowsAreStale = true; }
    void setSearchText(std::optional<std::string> text);
    const std::optional<std::string>& searchText() const { return m_rows.searchText(); }
    void sort(std::vector<SortDescriptor> descriptors);
    // The rows, made anew when stale.
    const std::shared_ptr<const RuleRows>& rows() const;
    // The rows as they are, perhaps stale.
    const std::shared_ptr<const RuleRows>& presentRows() const { return m_rows.rows(); }
    // All rules, whatever search text and sort order.
    std::shared_ptr<const RuleRows> storedRows() const;
    // True when all rules are still those of earlier storedRows(), and none has changed.
    bool hasExactly(const RuleRows& stored) const;
    // The policy rules that pass the search, in stored order.
    std::vector<PolicyRulePtr> passingPolicyRules() const;
    // True when `rule`, with its current value, passes the search.
    bool passes(const PolicyRule& rule) const;
    // See RuleManager.
    std::optional<RowsComputation> longComputation(std::size_t manyRules) const;
    bool adopt(RowsComputation computed);
    // Copies search text and sort order from another store.
    void setView(const RuleStore& other);
    std::size_t storedRules() const { return m_numbers.stored(); }

    // True when deleting all user rules one after the other, each with the first rule that is equal to it,
    // would leave none: then all may be removed at once.
    bool canRemoveAllAtOnce() const;
    // Another store with the same system rules, application groups, search text and sort order, but without
    // the user's rules.
    std::unique_ptr<RuleStore> withoutUserRules() const;
    // Takes over search text, sort order and groups from such a store that is in use instead. False, and
    // nothing changes, when the rules of that are not exactly the system rules of this one.
    bool replace(const RuleStore& inUse);

private:
    friend class StoreSuccession;

    using AnyList = std::variant<RuleList<WatchRule>*, RuleList<PolicyRule>*>;
    struct Plan;

    // The group that was found last for these very texts. Rules of one program share them, so that most
    // groups are found without making a key of their bytes: a long file of mixed programs is checked or
    // listed in 7 to 10 % less time.
    struct RecentGroup {
        NullableText processName;
        NullableText constraint;
        PolicyGroup* group = nullptr;

        bool isOf(const PolicyRuleFields& rule) const
        {
            return processName.sharesBytesWith(rule.processName)
                && constraint.sharesBytesWith(rule.constraint);
        }
    };

    template <class Rule> void append(RuleList<Rule>& rules, const std::shared_ptr<Rule>& rule)
    {
        m_exceptions.twins = m_exceptions.twins || RuleList<Rule>::holding(*rule, m_numbers) != nullptr;
        rules.append(rule);
    }
    template <class Rule> bool removeAt(RuleList<Rule>& rules, std::size_t slot);
    Plan planOf(ChangeSet changes);
    void prepareAdditions(Plan& plan);
    void perform(Plan& plan) noexcept;
    void removeOneByOne(Plan& plan) noexcept;
    void removeManyAtOnce(Plan& plan) noexcept;
    void addManyAtOnce(Plan& plan) noexcept;
    static const void* addressOfList(const AnyList& list)
    {
        return std::visit([](const auto* each) -> const void* { return each; }, list);
    }
    struct WholeLists {
        AddressSet lists{};
        std::size_t rules = 0; // in all of them
    };
    WholeLists listsNamedWhole(const std::vector<RuleRef>& rules) const;
    AnyList listFor(const RuleValue& value);
    std::optional<AnyList> listOf(const RuleRef& rule) const;
    void dropNewGroups(std::size_t kept) noexcept;
    RecentGroup* recentGroupFor(const PolicyRuleFields& rule) const;
    void makeRoomForGroup();
    void addGroupsOf(const RuleStore& other);
    void setHasLeftRecords(bool hasLeft) noexcept;
    RowsComputation& followedRules() const;
    void numberAfresh() const;
    std::shared_ptr<const RuleOrder> storedOrder() const;

    // Derived data, updated on access.
    mutable RowNumbers m_numbers;
    mutable RowsComputation m_rows;
    mutable bool m_rowsAreStale = false;
    mutable AppendOnlyTable<RuleValue> m_values; // by row number; as far as snapshots have needed them
    mutable std::vector<const Groups::value_type*> m_orderedGroups;
    mutable std::vector<const Groups::value_type*> m_newGroups; // not yet in m_orderedGroups

    RuleExceptions m_exceptions;
    mutable std::vector<RecentGroup>
        m_recentGroups; // by the addresses of the texts; as many as a power of two
    mutable Groups m_groups;
    mutable RuleList<WatchRule> m_watchRules{m_numbers, m_exceptions};
};

} // namespace quorvane::rules
