#pragma once

#include "rules/ChangeSet.h"
#include "rules/RulesMerge.h"

#include <vector>

namespace quorvane::rules {

// The rules that a merge came to, in order.
std::vector<RuleValue> rulesOf(const MergeResult& merged);

// What has to change in a store with the rules `ours`, as its userRules() are, to hold what `merged` came to;
// the merge was made of the values of these very rules. Rules that come get records of their own; a rule that
// moves goes and comes back.
ChangeSet changeTo(const MergeResult& merged, const std::vector<RuleRef>& ours);

} // namespace quorvane::rules
