#pragma once

#include "rules/RuleValue.h"

#include <string>
#include <string_view>

// A rule in words, for users who do not read its fields. Pure functions without file access.

namespace quorvane::workflow {

// The rule as a sentence: "Mail may read and write anything in /Users/ann/Documents/." Programs have their
// short names. Unknown class or type codes are named as unknown.
std::string ruleSentence(const rules::RuleValue& rule);

// The other properties of the rule: the full paths of program and parent, its constraint, creation time, tag,
// and whether it is a system rule. "/bin/sh · bound to nothing but its path · tag work".
std::string ruleDetails(const rules::RuleValue& rule);

// What a constraint binds to: "bound to team K7Q2M9XW4T".
std::string constraintWords(std::string_view constraint);

} // namespace quorvane::workflow
