#include "rules/RuleIdentity.h"

#include "rules/Hashing.h"

#include <type_traits>

namespace quorvane::rules {

namespace {

template <class Fields> std::uint64_t hashOfCommonFields(const Fields& rule)
{
    std::uint64_t hash = combinedHash(static_cast<std::uint64_t>(rule.policyType), rule.path.view());
    hash = combinedHash(hash, rule.processName.view());
    return combinedHash(hash, std::uint64_t{rule.operations} << 32U | rule.flags);
}

} // namespace

bool isEqualRule(const PolicyRuleFields& a, const PolicyRuleFields& b)
{
    return isEqualButForPath(a, b) && equalNonNull(a.path, b.path);
}

bool isEqualRule(const WatchRuleFields& a, const WatchRuleFields& b)
{
    return a.policyType == b.policyType && a.operations == b.operations && a.flags == b.flags
        && equalNonNull(a.path, b.path) && equalNonNull(a.processName, b.processName);
}

bool isEqualRule(const RuleValue& a, const RuleValue& b)
{
    return std::visit(
        [](const auto& one, const auto& other) {
            if constexpr (std::is_same_v<decltype(one), decltype(other)>)
                return isEqualRule(*one, *other);
            else
                return false;
        },
        a, b);
}

bool equalsItself(const PolicyRuleFields& rule)
{
    return !rule.path.isNull() && !rule.processName.isNull() && !rule.constraint.isNull();
}

bool equalsItself(const WatchRuleFields& rule)
{
    return !rule.path.isNull() && !rule.processName.isNull();
}

bool isEqualButForPath(const PolicyRuleFields& a, const PolicyRuleFields& b)
{
    return a.policyClass == b.policyClass && a.policyType == b.policyType && a.operations == b.operations
        && a.flags == b.flags && !a.path.isNull() && equalNonNull(a.processName, b.processName)
        && equalNonNull(a.constraint, b.constraint);
}

bool isOfSameApplication(const PolicyRuleFields& a, const PolicyRuleFields& b)
{
    const auto same = [](const NullableText& one, const NullableText& other) {
        return one.isNull() ? other.isNull() : equalNonNull(one, other);
    };
    return same(a.processName, b.processName) && same(a.constraint, b.constraint);
}

std::uint64_t identityHash(const PolicyRuleFields& rule)
{
    const std::uint64_t hash = combinedHash(hashOfCommonFields(rule), rule.constraint.view());
    return combinedHash(hash, static_cast<std::uint64_t>(rule.policyClass));
}

std::uint64_t identityHash(const WatchRuleFields& rule)
{
    return hashOfCommonFields(rule);
}

std::uint64_t identityHash(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return identityHash(fields); });
}

} // namespace quorvane::rules
