#include "workflow/VersionDifference.h"

#include "history/Journal.h"
#include "rules/RulesText.h"
#include "workflow/VersionChanges.h"

namespace quorvane::workflow {

std::optional<VersionDifference> differenceOfVersion(history::Journal& journal, std::int64_t number)
{
    const auto version = journal.version(number);
    if (!version)
        return std::nullopt;
    const VersionChanges changes = changesOf(journal, *version);
    if (changes.problem)
        return std::nullopt;
    return VersionDifference{
        .difference = rulesDifference(rules::rulesOfText(changes.before), rules::rulesOfText(changes.after)),
        .since = changes.since,
        .isWholeStory = changes.since == version->before};
}

} // namespace quorvane::workflow
