#pragma once

#include "workflow/RulesApplication.h"

#include <stdexcept>
#include <string_view>

namespace quorvane::cli {

// What is wrong with a rule that was given, and what was expected.
class NoRuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The rule that a line of JSON is: an object with the keys of a listed rule. Keys that say nothing about the
// rule itself are ignored, whatever they hold and however deep. Throws NoRuleError.
workflow::WantedRule ruleOfJson(std::string_view line);

} // namespace quorvane::cli
