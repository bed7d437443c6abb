#include "history/UndoOrder.h"

#include <algorithm>

namespace quorvane::history {

namespace {

using Numbers = std::vector<std::int64_t>;

// Even if it is not the last one: an undone action is never undone again.
void move(std::int64_t number, Numbers& from, Numbers& to)
{
    from.erase(std::remove(from.begin(), from.end(), number), from.end());
    to.push_back(number);
}

std::optional<std::int64_t> last(const Numbers& numbers)
{
    return numbers.empty() ? std::nullopt : std::optional(numbers.back());
}

// A file that was only rewritten leaves nothing to undo.
bool changesRules(const JournalVersion& version)
{
    return version.added + version.removed + version.changed > 0;
}

} // namespace

// Replays the history on two stacks: an action clears what can be redone, undo and redo move an action
// across.
UndoOrder undoOrder(const std::vector<JournalVersion>& versions)
{
    Numbers done;
    Numbers undone;
    for (const JournalVersion& version : versions) {
        if (version.kind == VersionKind::action && changesRules(version)) {
            done.push_back(version.number);
            undone.clear();
        } else if (version.kind == VersionKind::undo && version.of) {
            move(*version.of, done, undone);
        } else if (version.kind == VersionKind::redo && version.of) {
            move(*version.of, undone, done);
        }
    }
    return {last(done), last(undone)};
}

} // namespace quorvane::history
