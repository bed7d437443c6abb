#pragma once

#include "rules/RuleManager.h"
#include "workflow/RulesPlace.h"

#include <cstddef>
#include <vector>

namespace quorvane::cli {

class Output;

// Prints these rows of the index, with their numbers: one JSON object per line, or a human-readable table.
// `place`: where programs are looked up.
void writeRows(Output& output, const rules::RuleManager& store, const std::vector<std::size_t>& rows,
    bool includeSystemRules, const workflow::RulesPlace& place, bool asJson);

} // namespace quorvane::cli
