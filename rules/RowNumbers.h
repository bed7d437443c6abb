#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RuleRef.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::rules {

// Numbers stored rules, so that rows, sorted orders and search marks are lists of numbers. A number names a
// rule with the value that it had when it was numbered: a changed rule gets a new one, and a number is used
// once. So what is known by number never has to be taken back.
//
// Never throws: when there is no memory it loses count, and the rules must be numbered afresh.
class RowNumbers {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    // The number of a rule that is stored from now on.
    std::uint32_t add(const RuleRef& rule) noexcept;
    // The rule is not stored any more.
    void remove(std::uint32_t number) noexcept;
    // The number of the rule `number` now that its value has changed.
    std::uint32_t renew(std::uint32_t number) noexcept;

    // The rules by number; those that are no longer stored too.
    const AppendOnlyTable<RuleRef>& rules() const { return m_rules; }
    bool isStored(std::uint32_t number) const { return m_isStored[number]; }
    // How many rules are stored.
    std::size_t stored() const { return m_stored; }

    // Somebody knows things by the numbers given so far: a change of their rules needs new ones.
    void settle() { m_settled = m_rules.size(); }

    // True when most numbers are those of rules that are gone, or when it has lost count.
    bool mustStartAfresh() const;
    void clear();
    // It has lost count.
    void lose() noexcept { m_isLost = true; }

private:
    AppendOnlyTable<RuleRef> m_rules;
    std::vector<bool> m_isStored;
    std::size_t m_stored = 0;
    std::size_t m_settled = 0;
    bool m_isLost = false;
};

} // namespace quorvane::rules
