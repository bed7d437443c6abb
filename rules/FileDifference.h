#pragma once

#include "rules/RulesDiff.h"

#include <cstddef>
#include <string_view>

namespace quorvane::rules {

// The rulesDifference() of the rules that a store reads from two user's files, without keeping the rules that
// do not differ in memory: files of a million rules take a fifth of what their rules would. Pure, any
// thread; throws only std::bad_alloc.
RulesDifference fileDifference(std::string_view before, std::string_view after);

struct FileDifferenceCounts {
    std::size_t added = 0;
    std::size_t removed = 0;
    std::size_t changed = 0;
    std::size_t rulesAfter = 0; // that a store reads from the later file
};

// How many rules are in the lists of fileDifference(), whose rules are not kept either.
FileDifferenceCounts fileDifferenceCounts(std::string_view before, std::string_view after);

} // namespace quorvane::rules
