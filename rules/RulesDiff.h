#pragma once

#include "rules/RuleValue.h"

#include <utility>
#include <vector>

namespace quorvane::rules {

// What differs between two lists of rules.
struct RulesDifference {
    std::vector<RuleValue> added; // in the order of the later list
    std::vector<RuleValue> removed; // in the order of the earlier list
    // Before and after, in the order of the later list: rules whose tag or creation time differ.
    std::vector<std::pair<RuleValue, RuleValue>> changed;

    bool isEmpty() const { return added.empty() && removed.empty() && changed.empty(); }
};

// The difference by rule equality. How often an equal rule stands is no difference; of equal rules the first
// counts. Pure, from any thread; time and memory in proportion to the rules.
RulesDifference rulesDifference(const std::vector<RuleValue>& before, const std::vector<RuleValue>& after);

} // namespace quorvane::rules
