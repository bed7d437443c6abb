#pragma once

#include "cli/RuleSelection.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quorvane {

// FILE, which several commands take in place of the current user's configuration.
void addFileOption(CLI::App& command, RuleSelection& selection);

// --system, --filter and --sort, which say what the rows of a command are.
class SelectionOptions {
public:
    void addTo(CLI::App& command, RuleSelection& selection);

    // Takes the sort keys over into the selection. Throws CLI::ValidationError for one that is none.
    void finish(RuleSelection& selection) const;

private:
    std::vector<std::string> m_sort;
};

} // namespace quorvane
