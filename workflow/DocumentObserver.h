#pragma once

#include "rules/ChangeSet.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::workflow {

// Information for the user about the rules and their file, besides the result of an operation.
struct DocumentNews {
    enum class Kind {
        merged, // changes by another program were merged before ours were written
        rulesLost, // another program removed many rules; `version` has them
        conflict, // both sides changed the same rule; ours is kept
        recovered, // an interrupted write was completed or reverted
        setAside, // a file that could not be read completely was renamed
        cutShort, // rules do not read back from the file as intended; writing whole lines would help
        unwritable, // the same, but whole lines would not help
        journal, // the history cannot be recorded
        warning, // the file was written, but with a minor failure
        fileIsAhead, // another program has written the file; the next write merges it
    };
    Kind kind{};
    std::string text; // a sentence or two, for the user
    std::vector<rules::RuleRef> rules{}; // affected rules that are stored, for "Show"
    std::optional<std::int64_t> version{}; // the version that "Restore" would restore
    std::optional<std::int64_t> shownFrom{}; // the first affected version; "Show" starts there
};

// Notified of changes by a RulesDocument, on the store's thread.
class DocumentObserver {
public:
    virtual ~DocumentObserver() = default;

    // The store was changed by `change`, besides what the running operation changes: changes by another
    // program were merged, or an undo or redo in the background has ended.
    virtual void rulesWereMerged(const rules::ChangeSet& change) = 0;
    // All rules were read again. Rules that still exist keep their records.
    virtual void rulesWereReloaded() = 0;
    // The user's file was written, or could not be: see RulesDocument::failure(). Also called when a
    // background write begins.
    virtual void fileStateDidChange() = 0;
    virtual void documentHasNews(const DocumentNews& news) = 0;
};

} // namespace quorvane::workflow
