#pragma once

#include "workflow/RulesApplication.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::cli {

// The rules of a file that are to be applied.
struct WantedRules {
    std::vector<workflow::WantedRule> rules; // no two are equal
    std::vector<std::size_t> skippedOptions; // lines with an option, from 1
    // What was expected, and in which line, where the file is not as it has to be; then nothing of it counts.
    std::optional<std::string> problem;
};

// Reads UTF-8 text without NUL: JSON, one object a line, when it begins with "{", else a rules file, in which
// nothing may stand that is no rule but comments, empty lines and options. A rule that stands there twice
// with another tag or creation time is a problem. Time and memory in proportion to the text.
WantedRules readWantedRules(std::string_view text);

} // namespace quorvane::cli
