#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::workflow {

// Why rules change, for the journal, the history and the names of Undo and Redo. A value object.
struct ChangeReason {
    enum class Kind { action, undo, redo };

    std::string action{}; // in words: "Delete 3 Rules"
    Kind kind = Kind::action;
    std::optional<std::int64_t> of{}; // the version that is undone or redone
    bool refusesCuts = false; // fails if a rule would be cut that is complete in the file
};

} // namespace quorvane::workflow
