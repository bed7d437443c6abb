#pragma once

#include "rules/RuleValue.h"

#include <cstdint>

// Tag and creation time: annotations of a rule that do not take part in rule equality. Equal rules that
// differ in them are the same rule, changed. Pure; any thread.

namespace quorvane::rules {

const NullableText& tagOf(const RuleValue& rule);
// 0 for a watch rule.
std::uint64_t createdOf(const RuleValue& rule);

// A null tag is the same only as another null one.
bool hasSameTag(const RuleValue& a, const RuleValue& b);
bool hasSameMarks(const RuleValue& a, const RuleValue& b);
// True when they are equal rules, too.
bool isEqualWithMarks(const RuleValue& a, const RuleValue& b);

// `rule` with the tag of one rule and the creation time of another; `rule` itself when that changes nothing.
RuleValue withMarks(const RuleValue& rule, const RuleValue& tagged, const RuleValue& timed);

} // namespace quorvane::rules
