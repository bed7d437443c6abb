#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The codes of the rule records and their texts in the rules file and the windows. Pure functions. The texts
// belong to the file format: never translated, never in another case.

namespace quorvane::rules {

namespace PolicyClass {
constexpr std::int32_t allow = 0;
constexpr std::int32_t deny = 1;
constexpr std::int32_t watch = 2;
} // namespace PolicyClass

namespace PolicyType {
constexpr std::int32_t prefix = 0;
constexpr std::int32_t path = 1;
constexpr std::int32_t suffix = 2;
} // namespace PolicyType

// The code for an unknown class or type text.
constexpr std::int32_t unknownCode = 4;

namespace RuleState {
constexpr std::int32_t user = 0;
constexpr std::int32_t system = 1;
constexpr std::int32_t recent = 2; // a user policy rule created less than a day before it was loaded
} // namespace RuleState

// "allow", "deny", "watch"; "err" for any other code.
std::string_view policyClassDescription(std::int32_t policyClass);
// Deliberate: "watch" gives the unknown code too, since no policy rule line may have it.
std::int32_t policyClassForString(std::string_view text);

// "prefix", "path", "suffix"; "err" for any other code.
std::string_view policyTypeDescription(std::int32_t policyType);
std::int32_t policyTypeForString(std::string_view text);

// Bits 1, 2, 4, 8, 16 as the letters "rwcmx", in that order; other bits are ignored.
std::string operationsDescription(std::int32_t operations);
inline std::string operationsForInteger(std::int32_t operations)
{
    return operationsDescription(operations);
}
// Each letter counts at any position; everything else is ignored.
std::uint32_t operationsForString(std::string_view text);

// "u" for bit 1. Deliberate: bit 2 is not described here.
std::string flagsDescription(std::int32_t flags);
// "u" for bit 1, then "s" for bit 2.
std::string flagsForInteger(std::int32_t flags);
std::uint32_t flagsForString(std::string_view text);

// The letters of a rule of either kind; for the thread that owns the rule.
template <class Rule> std::string operationsForRule(const Rule& rule)
{
    return operationsDescription(static_cast<std::int32_t>(rule.fields().operations));
}

// Of a policy rule only the first flag shows, of a watch rule only the second.
template <class Rule> std::string flagsForPolicyRule(const Rule& rule)
{
    return flagsDescription(static_cast<std::int32_t>(rule.fields().flags));
}
template <class Rule> std::string flagsForWatchRule(const Rule& rule)
{
    constexpr std::uint32_t shownFlag = 2;
    return flagsForInteger(static_cast<std::int32_t>(rule.fields().flags & shownFlag));
}

// True when every bit of b among bits 0 to 7 is also set in a. Higher bits are ignored by design.
bool isBitwiseInclusive(std::uint32_t a, std::uint32_t b);

} // namespace quorvane::rules
