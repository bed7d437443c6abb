#pragma once

#include "rules/RuleValue.h"

#include <string_view>
#include <vector>

namespace quorvane::rules {

// The part of a user's file that a store reads: up to the first NUL byte; nothing of a text that is not
// UTF-8.
std::string_view readableText(std::string_view text);

// The rules that a store reads from a user's file with this text, in the order of the file: of equal rules
// only the first. Sequence numbers are 0. Any thread.
std::vector<RuleValue> rulesOfText(std::string_view text);

} // namespace quorvane::rules
