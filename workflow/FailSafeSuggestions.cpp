#include "workflow/FailSafeSuggestions.h"

#include "history/Journal.h"
#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "rules/RulesFile.h"
#include "rules/RulesText.h"

#include <chrono>

#include <unistd.h>

namespace quorvane::workflow {

bool checkSafeMode(const platform::Locations& locations)
{
    return platform::isAnythingAt(locations.learningModeMarker());
}

bool areThereSuggestions(const platform::Locations& locations)
{
    return platform::isAnythingAt(locations.failSafeFile());
}

bool areSuggestionsDue(const platform::Locations& locations)
{
    return areThereSuggestions(locations) && !checkSafeMode(locations);
}

std::optional<Notice> suggestionsNotice(const platform::Locations& locations, const std::string& path)
{
    if (path != locations.failSafeFile())
        return std::nullopt;
    if (platform::isAnythingAt(locations.failSafeStrictMarker()))
        return Notice{"Unauthorized Access Attempts",
            "Quorvane denied the following file access attempts, and has created the following rule "
            "suggestions. If you have recently added new software, you may need to import these rules to "
            "allow it to operate correctly. Please review these rules, then click Import if you wish to add "
            "them."};
    return Notice{"New Rule Suggestions",
        "Quorvane detected new software attempting to run, and has created the following rule suggestions. "
        "Please review these rules, then click Import if you wish to add them."};
}

void keepSuggestions(const platform::Locations& locations, const std::string& stateFolder,
    const history::JournalLimits& limits, platform::Log& log)
{
    const rules::RulesFileText text
        = rules::RulesFileText::read(locations.failSafeFile(), std::chrono::milliseconds(0));
    if (text.bytes().empty())
        return;
    history::NewVersion version;
    version.kind = history::VersionKind::foreign;
    version.bytes = text.bytes();
    version.rules = rules::rulesOfText(text.bytes()).size();
    version.added = version.rules;
    const auto journal = history::Journal::open(stateFolder, locations.failSafeFile(), limits, log);
    if (!journal->record(version))
        log.write("the suggestions could not be kept: " + journal->problem().value_or("unknown"));
}

void discardSuggestions(const platform::Locations& locations)
{
    unlink(locations.failSafeFile().c_str());
    unlink(locations.failSafeStrictMarker().c_str());
}

} // namespace quorvane::workflow
