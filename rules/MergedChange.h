#pragma once

#include "rules/ChangeSet.h"
#include "rules/RulesMerge.h"

#include <vector>

namespace quorvane::rules {

// The rules that result from a merge, in order.
std::vector<RuleValue> rulesOf(const MergeResult& merged);

// The change that brings a store with the user rules `ours` (its userRules()) to the result `merged`; the
// merge must have been made from the values of these rules. Added rules get new records; a rule that moves is
// removed and added again. For the thread that owns the store.
ChangeSet changeTo(const MergeResult& merged, const std::vector<RuleRef>& ours);

} // namespace quorvane::rules
