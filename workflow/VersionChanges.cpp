#include "workflow/VersionChanges.h"

#include "history/Journal.h"

#include <utility>

namespace quorvane::workflow {

namespace {

// The newest older version; they are listed newest first.
std::optional<std::int64_t> newestOlder(history::Journal& journal, std::int64_t number)
{
    for (const history::JournalVersion& each : journal.versions()) {
        if (each.number < number)
            return each.number;
    }
    return std::nullopt;
}

std::string versionName(std::int64_t number)
{
    return "Version " + std::to_string(number);
}

} // namespace

VersionChanges changesOf(history::Journal& journal, const history::JournalVersion& version)
{
    VersionChanges changes;
    if (version.before) {
        changes.since
            = journal.version(*version.before) ? version.before : newestOlder(journal, version.number);
        if (!changes.since) {
            changes.problem = versionName(*version.before)
                + ", which came before, has been forgotten, and with it what changed.";
            return changes;
        }
    }
    auto before = changes.since ? journal.meantOf(*changes.since) : std::optional<std::string>("");
    auto after = before ? journal.meantOf(version.number) : std::nullopt;
    if (!after) {
        changes.problem = versionName(before ? version.number : *changes.since) + " can no longer be read.";
        return changes;
    }
    changes.before = std::move(*before);
    changes.after = std::move(*after);
    return changes;
}

std::string actionText(const history::JournalVersion& version)
{
    const std::string action = version.action.value_or(std::string());
    switch (version.kind) {
    case history::VersionKind::action:
        return action;
    case history::VersionKind::undo:
        return "Undo " + action;
    case history::VersionKind::redo:
        return "Redo " + action;
    case history::VersionKind::foreign:
        break;
    }
    return version.before ? "Changed by another program" : "As found when the history began";
}

} // namespace quorvane::workflow
