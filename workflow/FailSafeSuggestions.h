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

// True in learning mode, which leaves suggestions alone.
bool checkSafeMode(const platform::Locations& locations);

// True when suggestions wait and are to be offered for review.
bool areSuggestionsDue(const platform::Locations& locations);

// What the user is told when the review of `path` opens; none unless it is the fail-safe file.
std::optional<Notice> suggestionsNotice(const platform::Locations& locations, const std::string& path);

// Keeps what the fail-safe file holds as a version in a journal of its own, so that suggestions can be had
// again.
void keepSuggestions(const platform::Locations& locations, const std::string& stateFolder,
    const history::JournalLimits& limits, platform::Log& log);

// Deletes the fail-safe file and the marker beside it. Deliberate: every import does so in the end, whatever
// file it was of, and so does every review when it closes.
void discardSuggestions(const platform::Locations& locations);

} // namespace quorvane::workflow
