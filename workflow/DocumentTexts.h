#pragma once

#include "rules/ChangeSet.h"
#include "rules/RulesMerge.h"

#include <cstddef>
#include <string>
#include <vector>

// Messages about merges and writes. Pure.

namespace quorvane::workflow {

// "1 rule", "3 rules".
std::string countedRules(std::size_t count);

// What a merge did: `done` to our rules, `reports` for conflicts. Empty when it did nothing.
std::string mergeText(const rules::ChangeSet& done, const std::vector<rules::MergeReport>& reports);

// Reports how many rules do not read back from the file as they are: `cut` of them because their lines are
// cut, `others` even with whole lines.
std::string unwritableText(std::size_t cut, std::size_t others);

// Reports that rules equal to these were deleted instead of them.
std::string remainingText(const std::vector<rules::RuleRef>& remaining);

} // namespace quorvane::workflow
