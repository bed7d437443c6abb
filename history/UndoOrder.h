#pragma once

#include "history/JournalVersion.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane::history {

// Which actions can be undone and redone.
struct UndoOrder {
    std::optional<std::int64_t> undo; // the newest action that is not undone
    std::optional<std::int64_t> redo; // the action that was undone last, unless there was a new one since
};

// From all versions, oldest first. Versions of other programs are ignored. Pure; any thread.
UndoOrder undoOrder(const std::vector<JournalVersion>& versions);

} // namespace quorvane::history
