#pragma once

#include "rules/RuleCodes.h"
#include "rules/RuleValue.h"

#include <cstdint>
#include <string>

// Queries common to both kinds of rule. Pure; any thread.

namespace quorvane::rules {

// One of PolicyClass. PolicyClass::watch for a watch rule, whose property of that name is 0.
inline std::int32_t classOf(const PolicyRuleFields& rule)
{
    return rule.policyClass;
}
inline std::int32_t classOf(const WatchRuleFields& /*rule*/)
{
    return PolicyClass::watch;
}

// Empty for a null path.
inline std::string pathOf(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return std::string(fields.path.view()); });
}

// The identity of the value object.
inline const void* addressOf(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) -> const void* { return &fields; });
}

} // namespace quorvane::rules
