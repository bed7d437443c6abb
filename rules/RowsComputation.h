#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RowNumbers.h"
#include "rules/RuleFilter.h"
#include "rules/RuleRows.h"
#include "rules/RuleSort.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace quorvane::rules {

// The computation of a store's rows, with what it remembers of the last one. One sorted order of all rules is
// kept and updated incrementally; a search only marks the rules that contain its text, and the rows are those
// marked, in that order. So a search never sorts.
//
// A value: a copy shares what is large, and may run on another thread while the store goes on and changes its
// rules.
class RowsComputation {
public:
    // Sets the rules: `stored` holds all of them, in stored order. `numbers` must be settled before a rule
    // changes. Only on the store's thread, where rules are read without a lock: it looks for system rules.
    void setRules(const RowNumbers& numbers, std::shared_ptr<const RuleOrder> stored);
    // None, like the empty text, lets every rule pass.
    void setSearchText(std::optional<std::string> text);
    void setSortDescriptors(std::vector<SortDescriptor> descriptors);

    const std::optional<std::string>& searchText() const { return m_searchText; }
    const std::vector<SortDescriptor>& sortDescriptors() const { return m_sortDescriptors; }

    // Makes the rows: filtered, sorted, rules that tie in stored order. False when it was stopped, or when
    // memory ran out (std::bad_alloc); this object must not be run again then.
    bool run(const std::stop_token& stop = {});
    // Sorts the present rows stably by other descriptors: those that tie keep their order.
    void sortAgain(std::vector<SortDescriptor> descriptors);

    // As last run. Never null.
    const std::shared_ptr<const RuleRows>& rows() const { return m_rows; }
    // True when rows that tie are in stored order.
    bool areTiesStored() const { return m_tiesAreStored; }
    // True when these are the rules that were set. Their order follows from their numbers.
    bool hasRules(const RowNumbers& numbers) const;
    // True when the last run has seen exactly these rules.
    bool knows(const RowNumbers& numbers) const { return m_known == m_rules.size() && hasRules(numbers); }
    // True when its numbers are theirs: they were not renumbered since.
    bool isOf(const RowNumbers& numbers) const { return m_rules.sharesElementsWith(numbers.rules()); }
    // True when a run would sort or search all of these rules, or thousands of new ones. Either takes long if
    // all are many.
    bool takesLong(const RowNumbers& numbers) const;

    // Drops all that refers to numbers given so far. The rows stay.
    void forgetNumbers();

    // All rules, whatever search text and sort order.
    std::shared_ptr<const RuleRows> storedRows() const { return rowsOf(m_stored); }
    // The numbers of those of the user.
    std::shared_ptr<const RuleOrder> storedUserRules() const { return withoutSystemRules(m_stored); }
    // The policy rules that passed the search of the last run, in stored order.
    std::vector<PolicyRulePtr> passingPolicyRules() const;

private:
    void markSystemRules(const AppendOnlyTable<RuleRef>& rules);
    bool markPassing(const std::stop_token& stop);
    void bringSortedUpToDate();
    void insertSorted(RuleOrder& order, RuleOrder added) const;
    bool isPassing(std::uint32_t number) const { return !m_searchText || m_marks[number]; }
    std::shared_ptr<const RuleRows> rowsOf(std::shared_ptr<const RuleOrder> order) const;
    std::shared_ptr<const RuleOrder> withoutSystemRules(std::shared_ptr<const RuleOrder> order) const;
    std::shared_ptr<const RuleOrder> passingInOrder(const std::stop_token& stop);

    AppendOnlyTable<RuleRef> m_rules; // by number
    std::vector<bool> m_isStored; // by number
    std::size_t m_known = 0; // numbers that all data below includes
    std::shared_ptr<const RuleOrder> m_stored = std::make_shared<const RuleOrder>(); // all rules
    std::vector<SortDescriptor> m_sortDescriptors;
    std::shared_ptr<const RuleOrder> m_sorted; // all rules, ties in stored order; null when not computed
    std::vector<bool> m_isSystem; // by number
    bool m_anySystem = false;

    std::optional<std::string> m_searchText;
    std::shared_ptr<RuleFilter> m_filter = std::make_shared<RuleFilter>(); // kept across texts and runs
    std::vector<bool> m_marks; // by number: contains m_markedText
    std::optional<std::string> m_markedText;

    std::shared_ptr<const RuleRows> m_rows = std::make_shared<const RuleRows>();
    bool m_tiesAreStored = true;
};

} // namespace quorvane::rules
