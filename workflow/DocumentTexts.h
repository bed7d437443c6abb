#pragma once

#include "rules/ChangeSet.h"
#include "rules/RulesMerge.h"

#include <cstddef>
#include <string>
#include <vector>

// What people read of changes that come together.

namespace quorvane::workflow {

// "1 rule", "3 rules".
std::string countedRules(std::size_t count);

// What a merge did: `done` to our rules, `reports` where the sides disagreed. Empty when it did nothing.
std::string mergeText(const rules::ChangeSet& done, const std::vector<rules::MergeReport>& reports);

// That so many rules do not come back from the file as they are: `cut` of them for the ends of their lines,
// `others` by whatever lines.
std::string unwritableText(std::size_t cut, std::size_t others);

// That rules were deleted which are equal to these, of which each remains.
std::string remainingText(const std::vector<rules::RuleRef>& remaining);

} // namespace quorvane::workflow
