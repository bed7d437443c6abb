#pragma once

#include "rules/RuleManager.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

// Which store a command asks, and which of its rows in which order.
struct RuleSelection {
    std::optional<std::string> file; // none for the current user's configuration
    bool labelAsSystem = false; // of `file`
    bool includeSystemRules = false;
    std::string filter;
    std::vector<SortDescriptor> sort;
};

// A store, and how well it could be read.
struct OpenedStore {
    std::unique_ptr<RuleManager> store;
    bool hasFailed = false; // as the store itself tells
    // All rules of the rules file are in the store. Stricter: to the store a file that is missing, not UTF-8,
    // or unreadable before other files were read is no failure. A named file must exist for this.
    bool isComplete = true;
};

// Reads the store that `selection` names, filtered and sorted, and complains of what could not be read.
OpenedStore openStore(const RuleSelection& selection, const Locations& locations, Log& log);

} // namespace quorvane
