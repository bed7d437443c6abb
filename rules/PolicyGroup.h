#pragma once

#include "rules/CoverIndex.h"
#include "rules/RuleList.h"

#include <memory>

namespace quorvane::rules {

// The policy rules of one application group, in stored order. For the thread that owns the store.
class PolicyGroup final : private SlotObserver<PolicyRuleFields> {
public:
    // Both must outlive the group, which notes in `exceptions` when it has strays.
    PolicyGroup(RowNumbers& numbers, RuleExceptions& exceptions)
        : m_exceptions(exceptions)
        , m_rules(numbers, exceptions, this)
    {
    }

    RuleList<PolicyRule>& rules() { return m_rules; }
    const RuleList<PolicyRule>& rules() const { return m_rules; }

    // The first rule of the group that makes `rule` redundant; null when there is none. Never `rule` itself.
    const PolicyRule* firstCovering(const PolicyRule& rule) const;
    // Makes what firstCovering() makes at its first call: 0.1 s for a million rules. Throws std::bad_alloc.
    void indexCovering() const;

    // True when a stored rule was changed so that it may belong to another group.
    bool hasStrays() const { return m_hasStrays; }

private:
    void slotIsFilled(std::size_t slot, const PolicyRuleFields& rule) noexcept override;
    void slotIsEmptied(std::size_t slot, const PolicyRuleFields& rule) noexcept override;
    void slotsHaveMoved() noexcept override { m_coverIndex.reset(); }
    void ruleHasStrayed() noexcept override { m_hasStrays = m_exceptions.strays = true; }

    RuleExceptions& m_exceptions;
    bool m_hasStrays = false;
    mutable std::unique_ptr<CoverIndex> m_coverIndex; // null until it is needed
    RuleList<PolicyRule> m_rules; // the last member: this object observes its destruction
};

} // namespace quorvane::rules
