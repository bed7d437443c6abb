#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleFindings.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::workflow {

// Selects rules: all criteria must hold, each by any of its values. An empty list is no criterion. A value
// object.
struct RuleCriteria {
    std::vector<std::int32_t> classes{}; // PolicyClass; watch for watch rules
    std::vector<std::int32_t> types{};
    std::vector<std::int32_t> states{}; // RuleState
    std::vector<std::string> tags{}; // exact; "" for a rule without one
    std::vector<std::string> processes{}; // the whole process string
    std::vector<std::string> programs{}; // the path of the program, whatever its parent
    std::vector<std::string> paths{}; // exact
    std::vector<FindingKind> findings{}; // joined lines have no row, and so select none
    std::vector<std::size_t> rows{};

    bool isEmpty() const;
    // True when row numbers are the only criterion.
    bool isOfRowsAlone() const;
};

// True when the rule meets the criteria for class, type, state, tag, process, program and path; findings and
// rows are ignored. Any thread.
bool hasProperties(const rules::RuleRef& rule, const RuleCriteria& criteria);

// The first of the requested row numbers that does not exist; none when all do.
std::optional<std::size_t> missingRow(
    const rules::RuleManager& store, bool includeSystemRules, const RuleCriteria& criteria);

// The rows of `store`, under its filter and sort order, that meet all criteria; in order. Findings are
// computed last and only for rules that meet everything else. For the store's thread.
std::vector<std::size_t> rowsMeeting(const rules::RuleManager& store, bool includeSystemRules,
    const RuleCriteria& criteria, const RulesPlace& place = RulesPlace::thisMachine());

} // namespace quorvane::workflow
