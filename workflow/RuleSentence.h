#pragma once

#include "rules/RuleValue.h"

#include <string>
#include <string_view>

// A rule in words, for a person who does not read its fields. Pure functions; nothing is looked up.

namespace quorvane::workflow {

// What the rule says, as a sentence: "Mail may read and write anything in /Users/ann/Documents/." Programs go
// by their short names. Words that the file knows no meaning of are said to be so.
std::string ruleSentence(const rules::RuleValue& rule);

// What else the rule says, a part each: the program's whole path and its parent's, what it is bound to, when
// it was made, its tag, whether it is the system's. "/bin/sh · bound to nothing but its path · tag work".
std::string ruleDetails(const rules::RuleValue& rule);

// What a constraint binds to: "bound to team K7Q2M9XW4T".
std::string constraintWords(std::string_view constraint);

} // namespace quorvane::workflow
