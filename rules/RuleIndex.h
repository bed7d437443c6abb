#pragma once

#include "rules/RuleFilter.h"
#include "rules/RuleRef.h"
#include "rules/RuleSort.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

// The rules as rows: filtered, sorted, with and without system rules. Never changes once published, so
// whoever keeps one keeps seeing the rows it was made with.
class RuleRows {
public:
    // How many rows there are.
    std::size_t count(bool includeSystemRules) const { return numbers(includeSystemRules).size(); }

    // Requires row < count(includeSystemRules).
    const RuleRef& at(std::size_t row, bool includeSystemRules) const
    {
        return (*m_rules)[numbers(includeSystemRules)[row]];
    }

private:
    friend class RuleIndex;
    const std::vector<std::uint32_t>& numbers(bool includeSystemRules) const
    {
        return includeSystemRules ? m_all : m_userOnly;
    }

    std::shared_ptr<const std::vector<RuleRef>> m_rules;
    std::vector<std::uint32_t> m_all; // numbers of m_rules
    std::vector<std::uint32_t> m_userOnly;
};

// Makes the rows out of the store's rules. For the thread that owns the store.
class RuleIndex {
public:
    RuleIndex();

    // The rules in stored order, unfiltered: watch rules, then policy rules by application group.
    void setRules(std::vector<RuleRef> rules, std::uint64_t changes);
    const std::vector<RuleRef>& rules() const { return *m_rules; }

    // None, like the empty text, lets every rule pass.
    void setSearchText(std::optional<std::string> text);
    const std::optional<std::string>& searchText() const { return m_searchText; }

    void setSortDescriptors(std::vector<SortDescriptor> descriptors);

    // Filters and sorts afresh, since properties of rules may have changed. `changes` differs from the last
    // one when they have.
    void rebuild(std::uint64_t changes);

    // Sorts the present rows, which keeps the order of those that tie.
    void sort();

    std::shared_ptr<const RuleRows> rows() const { return m_rows; }

    // The policy rules that pass the filter, in stored order.
    std::vector<PolicyRulePtr> passingPolicyRules() const;

    // True when the filter lets `rule`, as it is now, pass.
    bool passes(const PolicyRule& rule) const;

private:
    std::vector<std::uint32_t> passingRules(std::uint64_t changes);
    void publish(std::vector<std::uint32_t> order);

    std::shared_ptr<const std::vector<RuleRef>> m_rules;
    std::optional<std::string> m_searchText;
    std::vector<SortDescriptor> m_sortDescriptors;
    std::vector<std::uint32_t> m_passing; // in stored order
    std::shared_ptr<const RuleRows> m_rows;
    std::unique_ptr<RuleFilter> m_filter; // kept from one text to the next
    std::uint64_t m_changes = 0; // of records, when m_filter was made
};

} // namespace quorvane
