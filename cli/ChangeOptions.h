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

// --dry-run and --json of a command that changes many of the current user's rules at once, and what all of
// these commands do alike.
class ChangeOptions {
public:
    void addTo(CLI::App& command);

    // The rules to be changed, or only to be looked at. Null, after a complaint, when that cannot be.
    std::unique_ptr<UserDocument> open(const CommandContext& context) const;

    // Does what was planned unless it is a dry run, as one action that begins with `verb` in the history, and
    // prints it, with the rows of rules that were chosen by them. Returns the exit status.
    int carryOut(UserDocument& user, const workflow::PlannedChange& plan, const std::string& verb,
        const workflow::RowsOfRules& rows = {}) const;

private:
    bool m_isDryRun = false;
    bool m_asJson = false;
};

} // namespace quorvane::cli
