#pragma once

#include "rules/RuleValue.h"

#include <cstdint>

// Rule equality: everything except tag, creation time, sequence and system mark. Pure; any thread, except for
// records.

namespace quorvane::rules {

// A null text of `a` equals nothing, not even another null.
bool isEqualRule(const PolicyRuleFields& a, const PolicyRuleFields& b);
bool isEqualRule(const WatchRuleFields& a, const WatchRuleFields& b);
// Rules of different kinds are never equal.
bool isEqualRule(const RuleValue& a, const RuleValue& b);

// True when isEqualRule() of the rule and itself is. Compares no texts.
bool equalsItself(const PolicyRuleFields& rule);
bool equalsItself(const WatchRuleFields& rule);

// The looser comparison of fail-safe rules: the paths are ignored, but `a`'s must not be null.
bool isEqualButForPath(const PolicyRuleFields& a, const PolicyRuleFields& b);

// True when both have the same process name and constraint, and so the same application group. Watch rules
// have no groups.
bool isOfSameApplication(const PolicyRuleFields& a, const PolicyRuleFields& b);
inline bool isOfSameApplication(const WatchRuleFields&, const WatchRuleFields&)
{
    return true;
}

// Equal rules have equal hashes within one process.
std::uint64_t identityHash(const PolicyRuleFields& rule);
std::uint64_t identityHash(const WatchRuleFields& rule);
std::uint64_t identityHash(const RuleValue& rule);

// The same for records; call them on the thread that owns the records.
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
