#pragma once

#include "rules/CoverIndex.h"
#include "rules/RuleList.h"

#include <memory>

namespace quorvane {

// The policy rules of one application group, in stored order. For the thread that owns the store.
class PolicyGroup {
public:
    // `changes` counts the changes of stored records; it must outlive the group.
    explicit PolicyGroup(std::uint64_t& changes)
        : m_rules(changes)
    {
    }

    RuleList<PolicyRule>& rules() { return m_rules; }
    const RuleList<PolicyRule>& rules() const { return m_rules; }

    // The first rule of the group that makes `rule` redundant; null when there is none. `rule` itself never
    // does.
    const PolicyRule* firstCovering(const PolicyRule& rule) const;

private:
    RuleList<PolicyRule> m_rules;
    mutable std::unique_ptr<CoverIndex> m_coverIndex; // made when first asked for
};

} // namespace quorvane
