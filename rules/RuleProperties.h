#pragma once

#include "rules/RuleCodes.h"
#include "rules/RuleValue.h"

#include <cstdint>
#include <string>

// What is asked of rules of both kinds alike. Pure; any thread.

namespace quorvane::rules {

// One of PolicyClass. Of a watch rule it is that of watch rules, where its property of that name is 0.
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

// The identity of the very value.
inline const void* addressOf(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) -> const void* { return &fields; });
}

} // namespace quorvane::rules
