#include "workflow/FailSafeSuggestions.h"

#include "platform/FileBytes.h"

#include <unistd.h>

namespace quorvane {

bool checkSafeMode(const Locations& locations)
{
    return isAnythingAt(locations.learningModeMarker());
}

bool areSuggestionsDue(const Locations& locations)
{
    return isAnythingAt(locations.failSafeFile()) && !checkSafeMode(locations);
}

std::optional<Notice> suggestionsNotice(const Locations& locations, const std::string& path)
{
    if (path != locations.failSafeFile())
        return std::nullopt;
    if (isAnythingAt(locations.failSafeStrictMarker()))
        return Notice{"Unauthorized Access Attempts",
            "Quorvane denied the following file access attempts, and has created the following rule "
            "suggestions. If you have recently added new software, you may need to import these rules to "
            "allow it to operate correctly. Please review these rules, then click Import if you wish to add "
            "them."};
    return Notice{"New Rule Suggestions",
        "Quorvane detected new software attempting to run, and has created the following rule suggestions. "
        "Please review these rules, then click Import if you wish to add them."};
}

void discardSuggestions(const Locations& locations)
{
    unlink(locations.failSafeFile().c_str());
    unlink(locations.failSafeStrictMarker().c_str());
}

} // namespace quorvane
