#pragma once

#include "rules/RuleRef.h"

#include <cstdint>
#include <optional>
#include <string>

// Which rules are about a path. Pure functions, for the thread that owns the rules.

namespace quorvane {

struct TouchQuestion {
    std::string path;
    // The program, or the whole process string; none for every process.
    std::optional<std::string> process{};
    // Any of these operations; none for whatever operations.
    std::optional<std::uint32_t> operations{};
};

// True when the rule's text covers the path (rules/PathCover.h), its process is the one asked for or any in
// one of its forms, and it has one of the operations. Tells no verdict: which rule wins is decided where
// rules are enforced.
bool touches(const RuleRef& rule, const TouchQuestion& question);

} // namespace quorvane
