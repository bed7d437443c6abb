#pragma once

#include "rules/RulesDiff.h"

#include <string_view>

namespace quorvane::rules {

// The rulesDifference() of the rules that a store reads from two user's files, without keeping the rules that
// do not differ in memory. For UTF-8 texts without NUL. Pure, any thread; throws only std::bad_alloc.
RulesDifference fileDifference(std::string_view before, std::string_view after);

} // namespace quorvane::rules
