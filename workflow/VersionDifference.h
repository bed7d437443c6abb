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
    // The version that it is compared with; none for the very first, which is compared with no rules.
    std::optional<std::int64_t> since{};
    // False when the immediately preceding version was forgotten, so that the difference spans several
    // changes.
    bool isWholeStory = true;
};

// The difference of the intended rules between a version and the newest remaining one before it. None when
// there is no such version, when the contents of either cannot be read, and when everything before it was
// forgotten. For the thread that uses the journal.
std::optional<VersionDifference> differenceOfVersion(history::Journal& journal, std::int64_t number);

} // namespace quorvane::workflow
