#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RuleRef.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace quorvane::rules {

// Numbers stored rules, so that rows, sorted orders and search marks are lists of numbers. A number
// identifies a rule with the value that it had when it was numbered: a changed rule gets a new one, and
// numbers are not reused. So data cached by number never has to be invalidated.
//
// Never throws: when memory runs out it loses count, and the rules must be renumbered. For the thread that
// owns the store.
class RowNumbers {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    // The number of a newly stored rule; `none` when memory ran out.
    std::uint32_t add(RuleRef rule) noexcept;
    // Call it when the rule is no longer stored.
    void remove(std::uint32_t number) noexcept;
    // The new number of the rule `number` after its value has changed; the same one if it was given after the
    // last settle().
    std::uint32_t renew(std::uint32_t number) noexcept;

    // Sets another record for each number, of the same rule.
    void replaceRules(AppendOnlyTable<RuleRef> rules) { m_rules = std::move(rules); }

    // The rules by number, including those no longer stored.
    const AppendOnlyTable<RuleRef>& rules() const { return m_rules; }
    bool isStored(std::uint32_t number) const { return m_isStored[number]; }
    // The same for all numbers.
    const std::vector<bool>& storedMarks() const { return m_isStored; }
    // How many rules are stored.
    std::size_t stored() const { return m_stored; }

    // Call it when data is cached by the numbers given so far: a change of their rules then needs new
    // numbers.
    void settle() { m_settled = m_rules.size(); }

    // True when most numbers belong to removed rules, or when it has lost count.
    bool mustStartAfresh() const;
    void clear();
    // Marks it as having lost count.
    void lose() noexcept { m_isLost = true; }

private:
    AppendOnlyTable<RuleRef> m_rules;
    std::vector<bool> m_isStored;
    std::size_t m_stored = 0;
    std::size_t m_settled = 0;
    bool m_isLost = false;
};

} // namespace quorvane::rules
