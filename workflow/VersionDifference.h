#pragma once

#include "rules/RulesDiff.h"

#include <cstdint>
#include <optional>

namespace quorvane::history {
class Journal;
}

namespace quorvane::workflow {

// What a version of the rules changed.
struct VersionDifference {
    rules::RulesDifference difference{};
    // The version that it is compared with; none where the rules begin, with no rules.
    std::optional<std::int64_t> since{};
    // False when the version that came right before is no longer kept, so that more than one change shows.
    bool isWholeStory = true;
};

// The difference of the rules as meant, between a version and the newest one kept before it. None when there
// is no such version, when its contents or the other's cannot be read, and when what came before it is no
// longer kept. For the thread that uses the journal.
std::optional<VersionDifference> differenceOfVersion(history::Journal& journal, std::int64_t number);

} // namespace quorvane::workflow
