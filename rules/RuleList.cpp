#include "rules/RuleList.h"

#include "rules/Hashing.h"

namespace quorvane {

namespace {

template <class Fields> std::uint64_t hashOfCommonFields(const Fields& rule)
{
    std::uint64_t hash = combinedHash(static_cast<std::uint64_t>(rule.policyType), rule.path.view());
    hash = combinedHash(hash, rule.processName.view());
    return combinedHash(hash, std::uint64_t{rule.operations} << 32U | rule.flags);
}

} // namespace

std::uint64_t identityHash(const PolicyRule& rule)
{
    const PolicyRuleFields& fields = rule.fields();
    const std::uint64_t hash = combinedHash(hashOfCommonFields(fields), fields.constraint.view());
    return combinedHash(hash, static_cast<std::uint64_t>(fields.policyClass));
}

std::uint64_t identityHash(const WatchRule& rule)
{
    return hashOfCommonFields(rule.fields());
}

} // namespace quorvane
