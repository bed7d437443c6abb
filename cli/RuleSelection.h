#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleCriteria.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::cli {

struct CommandContext;

// Which store a command asks, and which of its rows in which order.
struct RuleSelection {
    std::optional<std::string> file; // none for the current user's configuration
    bool labelAsSystem = false; // of `file`
    bool includeSystemRules = false;
    std::string filter{};
    std::vector<rules::SortDescriptor> sort{};
    workflow::RuleCriteria criteria{}; // of the rows that filter and sort order make
};

// A store, and how well it could be read.
struct OpenedStore {
    std::unique_ptr<rules::RuleManager> store;
    bool hasFailed = false; // to read a file; a named one that is missing included
    // All rules of the selected rules file are in the store. A named file must exist for this, and hold
    // nothing but text; to the store both are no failure.
    bool isComplete = true;
};

// Reads the store that `selection` names, filtered and sorted, and complains of what could not be read. Of a
// user's file whose writing was cut short the rules are those that were meant; the file stays as it is.
OpenedStore openStore(const RuleSelection& selection, const CommandContext& context);

// The same of a file that a command only reads: a regular file, a link to one, or a pipe that a shell made.
// Not complete, after a complaint, when it cannot be read or is no text.
OpenedStore openInput(const std::string& file, const CommandContext& context);

} // namespace quorvane::cli
