#pragma once

#include "rules/CoverIndex.h"
#include "rules/RuleList.h"

#include <memory>

namespace quorvane::rules {

// The policy rules of one application group, in stored order. For the thread that owns the store.
class PolicyGroup final : private SlotObserver<PolicyRuleFields> {
public:
    // `numbers` and `anyStrays` must outlive the group; `anyStrays` becomes true when hasStrays() does.
    PolicyGroup(RowNumbers& numbers, bool& anyStrays)
        : m_anyStrays(anyStrays)
        , m_rules(numbers, this)
    {
    }

    RuleList<PolicyRule>& rules() { return m_rules; }
    const RuleList<PolicyRule>& rules() const { return m_rules; }

    // The first rule of the group that makes `rule` redundant; null when there is none. Never `rule` itself.
    const PolicyRule* firstCovering(const PolicyRule& rule) const;

    // True when a stored rule was changed so that it may belong to another group.
    bool hasStrays() const { return m_hasStrays; }

private:
    void slotIsFilled(std::size_t slot, const PolicyRuleFields& rule) noexcept override;
    void slotIsEmptied(std::size_t slot, const PolicyRuleFields& rule) noexcept override;
    void slotsHaveMoved() noexcept override { m_coverIndex.reset(); }
    void ruleHasStrayed() noexcept override { m_hasStrays = m_anyStrays = true; }

    bool& m_anyStrays;
    bool m_hasStrays = false;
    mutable std::unique_ptr<CoverIndex> m_coverIndex; // built on first use
    RuleList<PolicyRule> m_rules; // the last member: this object observes its destruction
};

} // namespace quorvane::rules
