#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleFindings.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::workflow {

// Which rules are meant: of different criteria all must hold, of the same one any. An empty list is no
// criterion.
struct RuleCriteria {
    std::vector<std::int32_t> classes{}; // PolicyClass; watch for watch rules
    std::vector<std::int32_t> types{};
    std::vector<std::int32_t> states{}; // RuleState
    std::vector<std::string> tags{}; // exact; "" for a rule without one
    std::vector<std::string> processes{}; // the whole process string
    std::vector<std::string> programs{}; // the path of the program, whatever its parent
    std::vector<std::string> paths{}; // exact
    std::vector<FindingKind> findings{}; // joined lines have no row, and so choose none
    std::vector<std::size_t> rows{};

    bool isEmpty() const;
    // True when rows are named by their numbers and by nothing else.
    bool isOfRowsAlone() const;
};

// True when the rule is of the class, type, state, tag, process, program and path that are asked for; neither
// findings nor rows count. Any thread.
bool hasProperties(const rules::RuleRef& rule, const RuleCriteria& criteria);

// The first of the rows that are asked for by number and are not there; none when all are.
std::optional<std::size_t> missingRow(
    const rules::RuleManager& store, bool includeSystemRules, const RuleCriteria& criteria);

// The rows of `store`, as filter and sort order make them, that meet all criteria; in order. Findings are
// looked for last and only where everything else holds. For the store's thread.
std::vector<std::size_t> rowsMeeting(const rules::RuleManager& store, bool includeSystemRules,
    const RuleCriteria& criteria, const RulesPlace& place = RulesPlace::thisMachine());

} // namespace quorvane::workflow
