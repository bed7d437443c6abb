#pragma once

#include "workflow/RuleCells.h"

#include <cstddef>
#include <optional>
#include <string_view>

// The cells of an import review: the same as in the rules table except for the columns and for what is
// reported about rules from elsewhere. For the thread that owns the stores.

namespace quorvane::workflow {

// The columns of the review, by number.
enum class ImportColumn { application, tick, ruleClass, type, path, operations };
constexpr int importColumnCount = 6;

// The title above a column; none above the ticks.
std::string_view importColumnTitle(ImportColumn column);

// The key that a click on the column's title sorts by; none for the ticks.
std::optional<rules::SortKey> importColumnSortKey(ImportColumn column);

// The cell of `row` of `rows`, which are rows of `reviewed`, user rules only. A rule that `present` contains
// is marked as already present. Programs and paths are looked up in `place`.
//
// Deliberate: the application is red only when nothing exists at its path, whatever its constraint, and a
// path that begins with "~/" never is.
RuleCell importCell(const rules::RuleManager& reviewed, const rules::RuleManager& present,
    const rules::RuleRows& rows, std::size_t row, ImportColumn column,
    const RulesPlace& place = RulesPlace::thisMachine().withoutHomes());

// True when `store` holds an equal rule, whether or not its filter shows it.
bool isPresent(const rules::RuleManager& store, const rules::RuleRef& rule);

} // namespace quorvane::workflow
