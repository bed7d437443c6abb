#pragma once

#include "workflow/DifferenceText.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace quorvane::workflow {
struct PlannedChange;
}

namespace quorvane::cli {

struct CommandContext;
class UserDocument;

// --dry-run and --json of a command that changes many of the current user's rules at once, and the common
// part of these commands.
class ChangeOptions {
public:
    void addTo(CLI::App& command);

    // Opens the rules for changing, or only for reading in a dry run. Null, with an error printed, when that
    // fails.
    std::unique_ptr<UserDocument> open(const CommandContext& context) const;

    // Performs the plan unless it is a dry run, as one action whose name in the history begins with `verb`,
    // and prints it, with row numbers for rules selected by row. Returns the exit status.
    int carryOut(UserDocument& user, const workflow::PlannedChange& plan, const std::string& verb,
        const workflow::RowsOfRules& rows = {}) const;

private:
    bool m_isDryRun = false;
    bool m_asJson = false;
};

} // namespace quorvane::cli
