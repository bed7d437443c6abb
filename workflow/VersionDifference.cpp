#include "workflow/VersionDifference.h"

#include "history/Journal.h"
#include "rules/RulesText.h"

#include <algorithm>
#include <string>
#include <vector>

namespace quorvane {

namespace {

std::optional<std::int64_t> newestBefore(Journal& journal, std::int64_t number)
{
    const std::vector<JournalVersion> versions = journal.versions();
    const auto found = std::find_if(versions.begin(), versions.end(),
        [number](const JournalVersion& version) { return version.number < number; });
    return found == versions.end() ? std::nullopt : std::optional(found->number);
}

} // namespace

std::optional<VersionDifference> differenceOfVersion(Journal& journal, std::int64_t number)
{
    const auto version = journal.version(number);
    if (!version)
        return std::nullopt;
    VersionDifference found;
    std::optional<std::string> before("");
    if (version->before) {
        found.since = newestBefore(journal, number);
        found.isWholeStory = found.since == version->before;
        before = found.since ? journal.meantOf(*found.since) : std::nullopt;
    }
    const auto after = journal.meantOf(number);
    if (!before || !after)
        return std::nullopt;
    found.difference = rulesDifference(rulesOfText(*before), rulesOfText(*after));
    return found;
}

} // namespace quorvane
