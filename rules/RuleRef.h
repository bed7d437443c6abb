#pragma once

#include "rules/PolicyRule.h"
#include "rules/Prefetch.h"
#include "rules/RuleValue.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <variant>
#include <vector>

namespace quorvane::rules {

// A rule of either kind, by reference. Never holds a null pointer.
using RuleRef = std::variant<PolicyRulePtr, WatchRulePtr>;

// The policy rule that `rule` is, or null when it is a watch rule.
inline const PolicyRule* policyRuleIn(const RuleRef& rule)
{
    const auto* policy = std::get_if<PolicyRulePtr>(&rule);
    return policy == nullptr ? nullptr : policy->get();
}

// The result of `question` for the record itself.
template <class Question> decltype(auto) visitRule(const RuleRef& rule, Question&& question)
{
    return std::visit([&](const auto& record) -> decltype(auto) { return question(*record); }, rule);
}

// Calls `use` with each of the rules, in order. Where they are not in memory order several times as fast as
// a plain loop. For the thread that owns the records.
template <class Use> void forEachRule(const std::vector<RuleRef>& rules, const Use& use)
{
    forEachPrefetchedRule(
        rules.size(), [&](std::size_t number) { use(rules[number]); },
        [&rules](std::size_t number, const auto& fetch) { visitRule(rules[number], fetch); });
}

inline bool isSystemRule(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return record.system(); });
}

// The identity of a record, while it lives.
inline const void* addressOf(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) -> const void* { return &record; });
}

// The current value of a record. Any thread.
inline RuleValue valueOf(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return RuleValue(record.value()); });
}

// The same without a lock, for the thread that owns the record.
inline RuleValue presentValueOf(const RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return RuleValue(record.presentValue()); });
}

// Sets the value of a record, which must be of its kind.
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
