#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/Prefetch.h"
#include "rules/RuleRef.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quorvane::rules {

// Row numbers (RowNumbers.h) of rules in some order.
using RuleOrder = std::vector<std::uint32_t>;

// The rules as rows: filtered, sorted, with and without system rules. Immutable; the records are those of the
// store.
class RuleRows {
public:
    // The number of rows.
    std::size_t count(bool includeSystemRules) const { return numbers(includeSystemRules).size(); }

    // Requires row < count(includeSystemRules).
    const RuleRef& at(std::size_t row, bool includeSystemRules) const
    {
        return m_rules[numbers(includeSystemRules)[row]];
    }

    // Calls `use` with each of `rows` and its rule, in this order. Several times as fast as at() of each
    // where rows are not in memory order. For the thread that owns the rules.
    template <class Use>
    void forEach(const std::vector<std::size_t>& rows, bool includeSystemRules, const Use& use) const
    {
        forEachOf(
            rows.size(), [&rows](std::size_t index) { return rows[index]; }, includeSystemRules, use);
    }
    // The same for all rows.
    template <class Use> void forEach(bool includeSystemRules, const Use& use) const
    {
        forEachOf(
            count(includeSystemRules), [](std::size_t index) { return index; }, includeSystemRules, use);
    }

    // Calls `use` with each system rule, in order, and looks at no other.
    template <class Use> void forEachSystemRule(const Use& use) const
    {
        if (m_userOnly == m_all)
            return;
        auto user = m_userOnly->begin();
        for (const std::uint32_t number : *m_all) {
            if (user != m_userOnly->end() && *user == number)
                ++user;
            else
                use(m_rules[number]);
        }
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
    friend class RowsComputation;
    const RuleOrder& numbers(bool includeSystemRules) const
    {
        return includeSystemRules ? *m_all : *m_userOnly;
    }

    template <class RowAt, class Use>
    void forEachOf(std::size_t rows, const RowAt& rowAt, bool includeSystemRules, const Use& use) const
    {
        const auto refAt
            = [&](std::size_t index) -> const RuleRef& { return at(rowAt(index), includeSystemRules); };
        forEachPrefetchedRule(
            rows, [&](std::size_t index) { use(rowAt(index), refAt(index)); },
            [&](std::size_t index, const auto& fetch) { visitRule(refAt(index), fetch); },
            [&](std::size_t index) { prefetchMemory(&refAt(index)); });
    }

    AppendOnlyTable<RuleRef> m_rules; // by number
    std::shared_ptr<const RuleOrder> m_all = std::make_shared<const RuleOrder>();
    std::shared_ptr<const RuleOrder> m_userOnly = m_all;
};

} // namespace quorvane::rules
