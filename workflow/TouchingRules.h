#pragma once

#include "rules/RuleRef.h"

#include <cstdint>
#include <optional>
#include <string>

// Which rules apply to a path. Pure functions; for the thread that owns the rules unless noted.

namespace quorvane::workflow {

struct TouchQuestion {
    std::string path;
    // The program, or the whole process string; none for every process.
    std::optional<std::string> process{};
    // Any of these operations; none for all.
    std::optional<std::uint32_t> operations{};
};

// True when the rule's text covers the path (rules/PathCover.h), its process is the given one or any form of
// "any", and it has one of the operations. Gives no verdict: which rule wins is decided by the enforcing
// side.
bool touches(const rules::RuleRef& rule, const TouchQuestion& question);
// The same for a value, on any thread.
bool touches(const rules::RuleValue& rule, const TouchQuestion& question);

// Why it does, in a few words about the rule's path, and about its program if the question names one or the
// table does not show it: "begins with it; any program". Requires a rule that does.
std::string whyTouches(const rules::RuleValue& rule, const TouchQuestion& question);

} // namespace quorvane::workflow
