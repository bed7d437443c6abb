#pragma once

#include "history/JournalVersion.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::history {
class Journal;
}

namespace quorvane::workflow {

// The contents before and after a version.
struct VersionChanges {
    std::optional<std::int64_t> since; // the version before; none when the version is the first of all
    std::string before; // the intended contents; empty when there is no version before
    std::string after;
    std::optional<std::string> problem; // in words: why the contents are not available
};

// The version before is the one that was the newest when `version` was recorded or, if that was forgotten,
// the newest older one that is left. For the thread that uses the journal.
VersionChanges changesOf(history::Journal& journal, const history::JournalVersion& version);

// What was done, in words: "Delete 3 Rules", "Undo Delete 3 Rules", "Changed by another program".
std::string actionText(const history::JournalVersion& version);

} // namespace quorvane::workflow
