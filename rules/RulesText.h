#pragma once

#include "rules/RuleValue.h"

#include <string_view>
#include <vector>

namespace quorvane::rules {

// The rules that a store reads from a user's file with this text, in the order of the file: of equal rules
// only the first. The text counts up to its first NUL byte; one that is not UTF-8 holds no rules. Sequence
// numbers are 0. Any thread.
std::vector<RuleValue> rulesOfText(std::string_view text);

} // namespace quorvane::rules
