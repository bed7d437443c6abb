#pragma once

#include "rules/RuleValue.h"

#include <cstdint>

// What makes two rules the same rule: everything but tag, creation time, sequence and system mark.

namespace quorvane::rules {

// A null text of `a` equals nothing, not even another null.
bool isEqualRule(const PolicyRuleFields& a, const PolicyRuleFields& b);
bool isEqualRule(const WatchRuleFields& a, const WatchRuleFields& b);
// Rules of different kinds are never equal.
bool isEqualRule(const RuleValue& a, const RuleValue& b);

// The looser comparison of fail-safe rules: of the paths only the existence of `a`'s counts.
bool isEqualButForPath(const PolicyRuleFields& a, const PolicyRuleFields& b);

// True when both have the same process name and constraint, and so the same application group. Watch rules
// have no groups.
bool isOfSameApplication(const PolicyRuleFields& a, const PolicyRuleFields& b);
inline bool isOfSameApplication(const WatchRuleFields&, const WatchRuleFields&)
{
    return true;
}

// Equal rules have equal hashes, in one run of the program.
std::uint64_t identityHash(const PolicyRuleFields& rule);
std::uint64_t identityHash(const WatchRuleFields& rule);
std::uint64_t identityHash(const RuleValue& rule);

// The same of records; for the thread that owns them.
template <class Record>
requires requires(const Record& record)
{
    record.fields();
}
bool isEqualRule(const Record& a, const Record& b)
{
    return isEqualRule(a.fields(), b.fields());
}
template <class Record>
requires requires(const Record& record)
{
    record.fields();
}
std::uint64_t identityHash(const Record& rule)
{
    return identityHash(rule.fields());
}

} // namespace quorvane::rules
