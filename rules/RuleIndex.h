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

// Numbers of rules in some order.
using RuleOrder = std::vector<std::uint32_t>;

// The rules as rows: filtered, sorted, with and without system rules. Never changes once published, so
// whoever keeps one keeps seeing the rows it was made with.
class RuleRows {
public:
    // How many rows there are.
    std::size_t count(bool includeSystemRules) const { return numbers(includeSystemRules).size(); }

    // Requires row < count(includeSystemRules).
    const RuleRef& at(std::size_t row, bool includeSystemRules) const
    {
        return m_rules[numbers(includeSystemRules)[row]];
    }

    // The rows of the rules for which `isWanted` is true, ascending. Goes through the rules as they lie in
    // memory, which is many times quicker than to ask row by row.
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

    // The rules by number, those that are no rows among them; it only grows from one publication of a store's
    // rows to the next, until the rules are numbered afresh.
    const AppendOnlyTable<RuleRef>& numberedRules() const { return m_rules; }

    // The rows whose rules' numbers are marked, in the same order. Requires a mark for each number.
    std::shared_ptr<const RuleRows> marked(const std::vector<bool>& marks) const;

    // How many rows, from the first and from the last, are those of the same unchanged rules in both. When
    // these are different stores', or one was numbered afresh, changed rules count as the same.
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

// Makes the rows out of the store's rules. One sorted order of all rules is kept and follows changes by
// difference; a search only marks the rules that contain its text, and the rows are those marked, in that
// order. For the thread that owns the store.
//
// rebuild(), sort() and policyRules() throw std::bad_alloc when there is no memory: the rows are then the
// former ones, and the next rebuild makes everything anew.
class RuleIndex {
public:
    RuleIndex();

    RowNumbers& numbers() { return m_numbers; }
    const RowNumbers& numbers() const { return m_numbers; }

    // None, like the empty text, lets every rule pass. The rows follow with the next rebuild.
    void setSearchText(std::optional<std::string> text);

    const std::optional<std::string>& searchText() const { return m_searchText; }
    const std::vector<SortDescriptor>& sortDescriptors() const { return m_sortDescriptors; }
    // Takes over both from another index. The rows follow with the next rebuild.
    void setView(const RuleIndex& other);

    // The rows are the rules of `stored`, which are all, filtered and sorted. Rules that tie keep the order
    // that they have in `stored`.
    void rebuild(RuleOrder stored);

    // Sorts the present rows, which keeps the order of those that tie. Stays in force for later rebuilds.
    void sort(std::vector<SortDescriptor> descriptors);

    std::shared_ptr<const RuleRows> rows() const { return m_rows; }
    // All rules, whatever the search and the sort order, as `stored` was last.
    std::shared_ptr<const RuleRows> storedRows() { return rowsOf(m_stored); }

    // The rules of `order` without those of the system.
    std::shared_ptr<const RuleOrder> withoutSystemRules(std::shared_ptr<const RuleOrder> order);

    // The policy rules that passed the filter when the rows were last rebuilt, in stored order.
    std::vector<PolicyRulePtr> passingPolicyRules() const;

    // True when the filter lets `rule`, as it is now, pass.
    bool passes(const PolicyRule& rule) const;

    // Drops everything that rebuild() can make anew, so that no number given so far is known to it. The rows
    // stay.
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
    std::size_t m_known = 0; // numbers that everything below knows
    std::shared_ptr<const RuleOrder> m_stored; // all rules
    std::vector<SortDescriptor> m_sortDescriptors;
    std::shared_ptr<const RuleOrder> m_sorted; // all rules, ties in stored order; null when not at hand
    std::vector<bool> m_isSystem; // by number
    bool m_anySystem = false;

    std::optional<std::string> m_searchText;
    std::unique_ptr<RuleFilter> m_filter; // kept from one text to the next
    std::vector<bool> m_marks; // by number: contains m_markedText
    std::optional<std::string> m_markedText;

    std::shared_ptr<const RuleRows> m_rows;
    bool m_tiesAreStored = true; // rows that tie are in stored order
};

} // namespace quorvane::rules
