#pragma once

#include "rules/RuleRef.h"

#include <cstdint>
#include <optional>
#include <string>

// Which rules are about a path. Pure functions, where nothing else is said for the
// thread that owns the rules.

namespace quorvane::workflow {

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
bool touches(const rules::RuleRef& rule, const TouchQuestion& question);
// The same of a value, for any thread.
bool touches(const rules::RuleValue& rule, const TouchQuestion& question);

// Why it does, in a few words about the rule's path, and about its program where the question names one or
// nothing else tells it: "begins with it; any program". Only of a rule that does.
std::string whyTouches(const rules::RuleValue& rule, const TouchQuestion& question);

} // namespace quorvane::workflow
