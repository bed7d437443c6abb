#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::workflow {

// Why rules change, for the journal, the history and the names of Undo and Redo.
struct ChangeReason {
    enum class Kind { action, undo, redo };

    std::string action{}; // in words: "Delete 3 Rules"
    Kind kind = Kind::action;
    std::optional<std::int64_t> of{}; // the version that an undo or redo is about
    bool refusesCuts = false; // fails where a line would be cut, also of a rule that another program wrote
};

} // namespace quorvane::workflow
