#pragma once

#include "workflow/RulesApplication.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::cli {

// The rules of a file to be applied.
struct WantedRules {
    std::vector<workflow::WantedRule> rules; // no two are equal
    std::vector<std::size_t> skippedOptions; // lines with an option, from 1
    // What was expected, if the file is invalid; then ignore the rest.
    struct Problem {
        std::optional<std::size_t> line; // from 1; none for the file as a whole
        std::string text;
    };
    std::optional<Problem> problem;
};

// Reads UTF-8 text without NUL: JSON, one object per line, when it begins with "{", else a rules file, which
// besides rules may contain only comments, empty lines and options. A repeated rule with another tag or
// creation time is a problem. Linear time and memory.
WantedRules readWantedRules(std::string_view text);

} // namespace quorvane::cli
