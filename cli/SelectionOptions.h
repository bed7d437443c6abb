#pragma once

#include "cli/RuleSelection.h"
#include "rules/RuleRef.h"
#include "workflow/RulesPlace.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quorvane::cli {

// FILE, which several commands accept instead of the current user's configuration.
void addFileOption(CLI::App& command, RuleSelection& selection);

// --system, --filter and --sort, which define the rows of a command, and the options that select some of
// them.
class SelectionOptions {
public:
    void addTo(CLI::App& command, RuleSelection& selection);
    // The same without --system.
    void addUserRowsTo(CLI::App& command, RuleSelection& selection);

    // Converts the texts given and stores them in the selection. Throws CLI::ValidationError for invalid
    // ones. `isNowhere`: programs and paths are not looked up.
    void finish(RuleSelection& selection, bool isNowhere) const;

private:
    std::vector<std::string> m_sort;
    std::vector<std::string> m_classes;
    std::vector<std::string> m_types;
    std::vector<std::string> m_findings;
};

// The rows that the selection chooses, with its filter and sort order already applied; none, with an error
// printed, when it names a row that does not exist.
std::optional<std::vector<std::size_t>> chosenRows(
    const rules::RuleManager& store, const RuleSelection& selection, const workflow::RulesPlace& place);

// The rules of these rows.
std::vector<rules::RuleRef> rulesOf(
    const rules::RuleManager& store, const std::vector<std::size_t>& rows, bool includeSystemRules);

} // namespace quorvane::cli
