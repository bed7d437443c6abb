#pragma once

#include "history/JournalVersion.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane::history {

// Which actions can be taken back and done again.
struct UndoOrder {
    std::optional<std::int64_t> undo; // the newest action that is not undone
    std::optional<std::int64_t> redo; // the action that was undone last, unless a new one came since
};

// From all versions, oldest first. Versions of other programs change nothing. Any thread.
UndoOrder undoOrder(const std::vector<JournalVersion>& versions);

} // namespace quorvane::history
