#pragma once

#include "history/JournalVersion.h"
#include "platform/Locations.h"
#include "workflow/Notice.h"

#include <optional>
#include <string>

// The rules that the protection side suggests in the fail-safe file after it has denied accesses or seen new
// software. Any thread.

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

// True in learning mode, which does not touch suggestions.
bool checkSafeMode(const platform::Locations& locations);

// True when there is a fail-safe file.
bool areThereSuggestions(const platform::Locations& locations);

// True when there are suggestions to be offered for review.
bool areSuggestionsDue(const platform::Locations& locations);

// The notice for opening a review of `path`; none unless it is the fail-safe file.
std::optional<Notice> suggestionsNotice(const platform::Locations& locations, const std::string& path);

// Records the fail-safe file as a version in a separate journal, so that suggestions can be restored.
void keepSuggestions(const platform::Locations& locations, const std::string& stateFolder,
    const history::JournalLimits& limits, platform::Log& log);

// Deletes the fail-safe file and the marker beside it. Deliberate: every import does so at its end, whatever
// the file, and so does every review when it closes.
void discardSuggestions(const platform::Locations& locations);

} // namespace quorvane::workflow
