#pragma once

#include "history/JournalVersion.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::history {
class Journal;
}

namespace quorvane::workflow {

// What a version made out of the one before it.
struct VersionChanges {
    std::optional<std::int64_t> since; // the version before; none when the version is the first of all
    std::string before; // the contents as meant; empty when there is no version before
    std::string after;
    std::optional<std::string> problem; // in words: why there are no contents
};

// The version before is the one that was the newest when `version` was recorded, or the newest older one that
// is left where that is forgotten. For the thread that uses the journal.
VersionChanges changesOf(history::Journal& journal, const history::JournalVersion& version);

// What was done, in words: "Delete 3 Rules", "Undo Delete 3 Rules", "Changed by another program".
std::string actionText(const history::JournalVersion& version);

} // namespace quorvane::workflow
