#pragma once

#include "rules/RuleValue.h"

#include <utility>
#include <vector>

namespace quorvane::rules {

// The differences between two lists of rules.
struct RulesDifference {
    std::vector<RuleValue> added; // in the order of the later list
    std::vector<RuleValue> removed; // in the order of the earlier list
    // Before and after, in the order of the later list: rules whose tag or creation time differ.
    std::vector<std::pair<RuleValue, RuleValue>> changed;

    bool isEmpty() const { return added.empty() && removed.empty() && changed.empty(); }
};

// The difference by rule equality. How often a rule is repeated does not matter; of equal rules the first
// counts. Pure, any thread; linear time and memory.
RulesDifference rulesDifference(const std::vector<RuleValue>& before, const std::vector<RuleValue>& after);

} // namespace quorvane::rules
