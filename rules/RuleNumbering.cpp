#include "rules/RuleNumbering.h"

#include "rules/RuleIdentity.h"

namespace quorvane::rules {

std::uint32_t RuleNumbering::numberOf(const RuleValue& rule)
{
    const std::uint64_t hash = identityHash(rule);
    for (auto entry = m_byHash.first(hash); entry != SlotChains::none; entry = m_byHash.next(entry)) {
        const std::uint32_t number = m_byHash.slot(entry);
        if (rule == *m_rules[number] || isEqualRule(rule, *m_rules[number]))
            return number;
    }
    const auto number = static_cast<std::uint32_t>(m_rules.size());
    m_rules.push_back(&rule);
    m_byHash.insert(hash, number);
    return number;
}

} // namespace quorvane::rules
