#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <limits>
#include <stop_token>
#include <vector>

// Allow and deny rules that speak of the same thing. Which of the two wins is the enforcing side's affair.

namespace quorvane::workflow {

// True when one rule allows and the other denies, their programs can be the same, their paths overlap and
// their operations meet.
//
// Programs can be the same when their heads (cut at " (-") are equal or one is "any"; when their parents are
// equal, or one has none, any, or a form with an ancestor; and unless their constraints are two different
// digests of one length or two different teams. Paths overlap when the text of one covers the other's
// (PathCover.h), and those of a suffix rule and a prefix rule always.
bool rulesOverlap(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b);

constexpr std::size_t noOverlap = std::numeric_limits<std::size_t>::max();

// For each rule the place of the first of those before it that it overlaps; noOverlap where there is none. A
// null pointer stands for a rule that takes no part. When it is stopped, the rest have none.
//
// Answers as a walk of all pairs would, but looks up tables. Each rule costs at most 24 look-ups for each of
// its operations and each beginning or end of its path that is the path of another rule, so that time and
// memory grow with the number of rules, times the length of their paths at worst.
std::vector<std::size_t> firstOverlaps(
    const std::vector<const rules::PolicyRuleFields*>& rules, const std::stop_token& stop = {});

} // namespace quorvane::workflow
