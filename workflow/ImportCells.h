#pragma once

#include "workflow/RuleCells.h"

#include <cstddef>
#include <optional>
#include <string_view>

// What the review of an import shows in each cell: the same as the rules table but for the columns and for
// what is worth telling of rules that come from elsewhere.

namespace quorvane::workflow {

// The columns of the review, by their number.
enum class ImportColumn { application, tick, ruleClass, type, path, operations };
constexpr int importColumnCount = 6;

// The title above a column; none above the ticks.
std::string_view importColumnTitle(ImportColumn column);

// What a click on the column's title sorts by; none for the ticks.
std::optional<rules::SortKey> importColumnSortKey(ImportColumn column);

// The cell of `row` of `rows`, which are rows of `reviewed`, user rules only. A rule that `present` holds as
// well is marked as already present. Programs and paths are looked up in `place`.
//
// Deliberate: the application is red only when nothing exists at its path, whatever its constraint, and a
// path that begins with "~/" never is.
RuleCell importCell(const rules::RuleManager& reviewed, const rules::RuleManager& present,
    const rules::RuleRows& rows, std::size_t row, ImportColumn column,
    const RulesPlace& place = RulesPlace::thisMachine().withoutHomes());

// True when `store` holds an equal rule, whether or not its filter shows it.
bool isPresent(const rules::RuleManager& store, const rules::RuleRef& rule);

} // namespace quorvane::workflow
