#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleRef.h"

#include <cstddef>
#include <string_view>

// What a command says before it writes rules that a rules file does not give back.

namespace quorvane::cli {

// True when the rule, written this way, reads back unchanged.
bool readsBack(const rules::RuleRef& rule, rules::LineEnds lineEnds);

// Warns on standard error that so many of the rules do not read back. `done`: what is done with the rules,
// such as "added". Prints nothing for 0.
void warnOfUnwritableRules(std::size_t count, std::string_view done);

} // namespace quorvane::cli
