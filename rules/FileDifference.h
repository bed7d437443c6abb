#pragma once

#include "rules/RulesDiff.h"

#include <string_view>

namespace quorvane::rules {

// What rulesDifference() says of the rules that a store reads from two user's files, without keeping the
// rules that do not differ. Of UTF-8 texts without NUL. Pure, from any thread; throws std::bad_alloc alone.
RulesDifference fileDifference(std::string_view before, std::string_view after);

} // namespace quorvane::rules
