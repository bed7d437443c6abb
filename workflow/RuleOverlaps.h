#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <limits>
#include <stop_token>
#include <vector>

// Allow and deny rules that apply to the same accesses. Which of the two wins is decided by the enforcing
// side. Pure; any thread.

namespace quorvane::workflow {

// True when one rule allows and the other denies, their programs can be the same, their paths overlap and
// they have an operation in common.
//
// Programs can be the same when their heads (cut at " (-") are equal or one is "any"; when their parents are
// equal, or one has none, any, or a form with an ancestor; and unless their constraints are two different
// digests of one length or two different teams. Paths overlap when the text of one covers the other's
// (PathCover.h), and those of a suffix rule and a prefix rule always.
bool rulesOverlap(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b);

constexpr std::size_t noOverlap = std::numeric_limits<std::size_t>::max();

// For each rule the index of the first one before it that it overlaps; noOverlap if there is none. A null
// pointer is ignored. When it is stopped, the remaining rules have none.
//
// Returns the same as comparing all pairs, but by table look-ups. Each rule costs at most 24 look-ups for
// each of its operations and each prefix or suffix of its path that is the path of another rule, so that time
// and memory are linear in the number of rules, times the length of their paths at worst.
std::vector<std::size_t> firstOverlaps(
    const std::vector<const rules::PolicyRuleFields*>& rules, const std::stop_token& stop = {});

} // namespace quorvane::workflow
