#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleValue.h"
#include "rules/WatchRule.h"

#include <variant>

namespace quorvane::rules {

// A rule of either kind, by reference. Never holds a null pointer.
using RuleRef = std::variant<PolicyRulePtr, WatchRulePtr>;

// The policy rule that `rule` is, or null when it is a watch rule.
inline const PolicyRule* policyRuleIn(const RuleRef& rule)
{
    const auto* policy = std::get_if<PolicyRulePtr>(&rule);
    return policy == nullptr ? nullptr : policy->get();
}

// What `question` answers when it is asked with the record itself.
template <class Question> decltype(auto) visitRule(const RuleRef& rule, Question&& question)
{
    return std::visit([&](const auto& record) -> decltype(auto) { return question(*record); }, rule);
}

inline bool isSystemRule(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return record.system(); });
}

// What tells records apart, as long as they live.
inline const void* addressOf(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) -> const void* { return &record; });
}

// The present value of a record.
inline RuleValue valueOf(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return RuleValue(record.value()); });
}

// The same for the thread that sets it, which needs no lock.
inline RuleValue presentValueOf(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return RuleValue(record.presentValue()); });
}

// Gives a record a value of its kind.
inline void setValue(const RuleRef& rule, const RuleValue& value)
{
    if (const auto* policy = std::get_if<PolicyRulePtr>(&rule))
        (*policy)->setValue(std::get<PolicyValue>(value));
    else
        std::get<WatchRulePtr>(rule)->setValue(std::get<WatchValue>(value));
}

// A new record with that value.
RuleRef recordOf(const RuleValue& value);

} // namespace quorvane::rules
