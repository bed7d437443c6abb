#pragma once

#include "rules/Hashing.h"
#include "rules/PolicyGroup.h"
#include "rules/PolicyRule.h"

#include <cstdint>
#include <vector>

namespace quorvane {

// Remembers the application groups of rules read before, by process name and constraint, so that a reader
// need not put their key together for every rule. Only texts that share their bytes count as known; it may
// forget at any time. Lives for the reading of one file, during which no group goes away.
class GroupMemo {
public:
    // The group of a rule with these texts; null when it is not known.
    PolicyGroup* find(const PolicyRuleFields& rule) const
    {
        const Entry& entry = m_entries[placeOf(rule)];
        const bool known = entry.processName.sharesBytesWith(rule.processName)
            && entry.constraint.sharesBytesWith(rule.constraint);
        return known ? entry.group : nullptr;
    }

    void remember(const PolicyRuleFields& rule, PolicyGroup& group)
    {
        m_entries[placeOf(rule)] = {rule.processName, rule.constraint, &group};
    }

private:
    struct Entry {
        NullableText processName; // keeps the bytes, and so their place, from being used again
        NullableText constraint;
        PolicyGroup* group = nullptr;
    };

    std::size_t placeOf(const PolicyRuleFields& rule) const
    {
        const auto process = reinterpret_cast<std::uintptr_t>(rule.processName.sharedBytes());
        const auto constraint = reinterpret_cast<std::uintptr_t>(rule.constraint.sharedBytes());
        return combinedHash(process, constraint) % m_entries.size();
    }

    std::vector<Entry> m_entries = std::vector<Entry>(1U << 14U);
};

} // namespace quorvane
