#pragma once

#include "rules/NullableText.h"

#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

namespace quorvane::rules {

// The properties of a policy rule; the codes are those of RuleCodes.h.
struct PolicyRuleFields {
    std::int32_t policyClass = 0;
    std::int32_t policyType = 0;
    NullableText path{};
    NullableText processName{}; // forms: ApplicationIdentity.h
    NullableText tag = "";
    NullableText constraint = ""; // 40 characters SHA-1, 64 SHA-256, else a team identifier; empty for none
    std::uint32_t operations = 0;
    std::uint32_t flags = 0;
    std::uint64_t created = 0; // seconds since 1970
    std::int64_t sequence = 0; // load order
    bool system = false;
};

// The properties of a watch rule; the codes are those of RuleCodes.h.
struct WatchRuleFields {
    std::int32_t policyType = 0;
    NullableText path{};
    NullableText processName{};
    NullableText tag = "";
    std::uint32_t operations = 0;
    std::uint32_t flags = 0;
    std::int64_t sequence = 0; // load order
    bool system = false;
};

// A rule at one moment, for snapshots, differences and merges. Never null, immutable, safe to read from any
// thread. The records PolicyRule and WatchRule are handles to a current value.
using PolicyValue = std::shared_ptr<const PolicyRuleFields>;
using WatchValue = std::shared_ptr<const WatchRuleFields>;
using RuleValue = std::variant<PolicyValue, WatchValue>;

inline PolicyValue makeRuleValue(PolicyRuleFields fields)
{
    return std::make_shared<const PolicyRuleFields>(std::move(fields));
}
inline WatchValue makeRuleValue(WatchRuleFields fields)
{
    return std::make_shared<const WatchRuleFields>(std::move(fields));
}

// The result of `question` for the properties of the rule.
template <class Question> decltype(auto) askValue(const RuleValue& rule, Question&& question)
{
    return std::visit([&](const auto& fields) -> decltype(auto) { return question(*fields); }, rule);
}

} // namespace quorvane::rules
