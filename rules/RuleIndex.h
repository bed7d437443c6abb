#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RowNumbers.h"
#include "rules/RuleFilter.h"
#include "rules/RuleRef.h"
#include "rules/RuleSort.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::rules {

// Row numbers (RowNumbers.h) of rules in some order.
using RuleOrder = std::vector<std::uint32_t>;

// The rules as rows: filtered, sorted, with and without system rules. Immutable once published. For the
// thread that owns the store.
class RuleRows {
public:
    // The number of rows.
    std::size_t count(bool includeSystemRules) const { return numbers(includeSystemRules).size(); }

    // Requires row < count(includeSystemRules).
    const RuleRef& at(std::size_t row, bool includeSystemRules) const
    {
        return m_rules[numbers(includeSystemRules)[row]];
    }

    // The rows of the rules for which `isWanted` is true, ascending. Visits the rules in memory order, which
    // is many times faster than row by row.
    template <class IsWanted>
    std::vector<std::size_t> rowsWhere(bool includeSystemRules, IsWanted isWanted) const
    {
        std::vector<bool> marks(m_rules.size());
        for (std::size_t number = 0; number < marks.size(); ++number)
            marks[number] = isWanted(m_rules[number]);
        std::vector<std::size_t> rows;
        const RuleOrder& order = numbers(includeSystemRules);
        for (std::size_t row = 0; row < order.size(); ++row) {
            if (marks[order[row]])
                rows.push_back(row);
        }
        return rows;
    }

    // The rules by number, including those without a row; from one publication of a store's rows to the next
    // it only grows, until the rules are renumbered.
    const AppendOnlyTable<RuleRef>& numberedRules() const { return m_rules; }

    // The rows whose rules' numbers are marked, in the same order. Requires a mark for each number.
    std::shared_ptr<const RuleRows> marked(const std::vector<bool>& marks) const;

    // How many rows, from the first and from the last, have the same unchanged rules in both. If they belong
    // to different stores, or one was renumbered, changed rules count as the same.
    struct Common {
        std::size_t start = 0;
        std::size_t end = 0;
    };
    Common commonWith(const RuleRows& other, bool includeSystemRules) const;

private:
    friend class RuleIndex;
    const RuleOrder& numbers(bool includeSystemRules) const
    {
        return includeSystemRules ? *m_all : *m_userOnly;
    }

    AppendOnlyTable<RuleRef> m_rules; // by number
    std::shared_ptr<const RuleOrder> m_all = std::make_shared<const RuleOrder>();
    std::shared_ptr<const RuleOrder> m_userOnly = m_all;
};

// Computes the rows from the store's rules. One sorted order of all rules is kept and updated incrementally;
// a search only marks the rules that contain its text, and the rows are those marked, in that order. So a
// search never sorts. For the thread that owns the store.
//
// rebuild(), sort() and policyRules() throw std::bad_alloc when there is no memory: the previous rows then
// stay, and the next rebuild recomputes everything.
class RuleIndex {
public:
    RuleIndex();

    RowNumbers& numbers() { return m_numbers; }
    const RowNumbers& numbers() const { return m_numbers; }

    // None, like the empty text, lets every rule pass. Takes effect with the next rebuild.
    void setSearchText(std::optional<std::string> text);

    const std::optional<std::string>& searchText() const { return m_searchText; }
    const std::vector<SortDescriptor>& sortDescriptors() const { return m_sortDescriptors; }
    // Copies both from another index. Takes effect with the next rebuild.
    void setView(const RuleIndex& other);

    // Makes the rows from `stored`, which holds all rules, filtered and sorted. Rules that tie keep their
    // order in `stored`.
    void rebuild(RuleOrder stored);

    // Sorts the current rows stably: those that tie keep their order. Stays in force for later rebuilds.
    void sort(std::vector<SortDescriptor> descriptors);

    std::shared_ptr<const RuleRows> rows() const { return m_rows; }
    // All rules, whatever the search and the sort order, in the order of the last `stored`.
    std::shared_ptr<const RuleRows> storedRows() { return rowsOf(m_stored); }

    // The rules of `order` without those of the system.
    std::shared_ptr<const RuleOrder> withoutSystemRules(std::shared_ptr<const RuleOrder> order);

    // The policy rules that passed the filter when the rows were last rebuilt, in stored order.
    std::vector<PolicyRulePtr> passingPolicyRules() const;

    // True when `rule`, with its current value, passes the filter.
    bool passes(const PolicyRule& rule) const;

    // Drops everything that rebuild() can recompute, and with it all numbers given so far. The rows stay.
    void forgetNumbers();

private:
    void markSystemRules();
    void markPassing();
    void bringSortedUpToDate();
    void insertSorted(RuleOrder& order, RuleOrder added) const;
    void sortAll();
    std::shared_ptr<const RuleOrder> passingInOrder();
    bool keepsTies(const std::vector<SortDescriptor>& descriptors) const;
    bool isPassing(std::uint32_t number) const { return !m_searchText || m_marks[number]; }
    std::shared_ptr<const RuleRows> rowsOf(std::shared_ptr<const RuleOrder> order);
    void publish(std::shared_ptr<const RuleOrder> order);

    RowNumbers m_numbers;
    std::size_t m_known = 0; // numbers that all data below includes
    std::shared_ptr<const RuleOrder> m_stored; // all rules
    std::vector<SortDescriptor> m_sortDescriptors;
    std::shared_ptr<const RuleOrder> m_sorted; // all rules, ties in stored order; null when not computed
    std::vector<bool> m_isSystem; // by number
    bool m_anySystem = false;

    std::optional<std::string> m_searchText;
    std::unique_ptr<RuleFilter> m_filter; // kept across search texts
    std::vector<bool> m_marks; // by number: contains m_markedText
    std::optional<std::string> m_markedText;

    std::shared_ptr<const RuleRows> m_rows;
    bool m_tiesAreStored = true; // rows that tie are in stored order
};

} // namespace quorvane::rules
