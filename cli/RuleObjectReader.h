#pragma once

#include "workflow/RulesApplication.h"

#include <stdexcept>
#include <string_view>

namespace quorvane::cli {

// Says what is wrong with an input rule, and what was expected.
class NoRuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Parses a rule from a line of JSON: an object with the keys of a listed rule. Keys that are not properties
// of the rule are ignored, whatever their values and nesting. Throws NoRuleError.
workflow::WantedRule ruleOfJson(std::string_view line);

} // namespace quorvane::cli
