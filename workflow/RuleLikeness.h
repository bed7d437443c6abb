#pragma once

#include "workflow/KnownProblems.h"
#include "workflow/RulesSelection.h"

#include <array>
#include <vector>

namespace quorvane::workflow {

// Properties that rules can have in common.
enum class RuleTrait { ruleClass, type, state, tag, program };
inline constexpr std::array allRuleTraits{
    RuleTrait::ruleClass, RuleTrait::type, RuleTrait::state, RuleTrait::tag, RuleTrait::program};

// The rules of the selection's table that share the trait with a selected one, including the selected ones,
// from the top down. One pass over the table. Any thread.
std::vector<rules::RuleRef> rulesLike(const RulesSelection& selection, RuleTrait trait);

// The same for the rules that have a problem of the same kind as a selected one; empty if no selected one has
// a problem.
std::vector<rules::RuleRef> rulesWithSameProblem(
    const RulesSelection& selection, const ProblemLists& problems);

} // namespace quorvane::workflow
