#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleCriteria.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvane::cli {

struct CommandContext;

// Which store a command uses, and which of its rows in which order.
struct RuleSelection {
    std::optional<std::string> file; // none for the current user's configuration
    bool labelAsSystem = false; // of `file`
    bool includeSystemRules = false;
    std::string filter{};
    std::vector<rules::SortDescriptor> sort{};
    workflow::RuleCriteria criteria{}; // for the rows under filter and sort order
};

// A store, and whether it could be read.
struct OpenedStore {
    rules::RuleManager& store; // until the process ends
    bool hasFailed = false; // to read a file, including a named one that is missing
    // True when all rules of the selected rules file are in the store. Requires a named file to exist and to
    // be text, neither of which the store treats as a failure.
    bool isComplete = true;
};

// Reads the store that `selection` names, filtered and sorted, and prints errors for what could not be read.
// If a write of the user's file was interrupted, the rules are the intended ones; the file is unchanged.
OpenedStore openStore(const RuleSelection& selection, const CommandContext& context);

// The same for a file that a command only reads: a regular file, a link to one, or a pipe created by a shell.
// Not complete, with an error printed, when it cannot be read or is not text.
OpenedStore openInput(const std::string& file, const CommandContext& context);

} // namespace quorvane::cli
