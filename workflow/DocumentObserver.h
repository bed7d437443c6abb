#pragma once

#include "rules/ChangeSet.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::workflow {

// Something that the person should know about the rules and their file, besides the result of an operation.
struct DocumentNews {
    enum class Kind {
        merged, // rules of another program were taken over before ours were written
        rulesLost, // another program removed many rules; `version` has them
        conflict, // both sides changed one rule; ours is kept
        recovered, // a write that was cut short has been completed or taken back
        setAside, // a file that could not be read whole was kept under another name
        cutShort, // rules do not come back from the file as they were meant; whole lines would keep them
        unwritable, // the same, but whole lines are no help
        journal, // the history cannot be kept
        warning, // the file was written, but something beside it failed
        fileIsAhead, // another program has written the file; the next write merges it
    };
    Kind kind{};
    std::string text; // a sentence or two, for people
    std::vector<rules::RuleRef>
        rules{}; // that it is about and that are stored, as far as "Show" can use them
    std::optional<std::int64_t> version{}; // that "Restore" would bring back
    std::optional<std::int64_t> shownFrom{}; // the first version from here on is what it is about
};

// Told of changes by a RulesDocument, on the store's thread.
class DocumentObserver {
public:
    virtual ~DocumentObserver() = default;

    // What another program did has come into the store by `change`, besides what the running operation does.
    virtual void rulesWereMerged(const rules::ChangeSet& change) = 0;
    // All rules were read anew. Rules that are still there keep their records.
    virtual void rulesWereReloaded() = 0;
    // The user's file has been written, or could not be; RulesDocument::failure() tells. Also when a write in
    // the background begins.
    virtual void fileStateDidChange() = 0;
    virtual void documentHasNews(const DocumentNews& news) = 0;
};

} // namespace quorvane::workflow
