#pragma once

#include "workflow/KnownProblems.h"
#include "workflow/RulesSelection.h"

#include <array>
#include <vector>

namespace quorvane::workflow {

// What rules can have in common.
enum class RuleTrait { ruleClass, type, state, tag, program };
inline constexpr std::array allRuleTraits{
    RuleTrait::ruleClass, RuleTrait::type, RuleTrait::state, RuleTrait::tag, RuleTrait::program};

// The rules of the selection's table that have that in common with a selected one, these included, from the
// top down. One walk; any thread.
std::vector<rules::RuleRef> rulesLike(const RulesSelection& selection, RuleTrait trait);

// The same for the rules that have a problem of a kind that a selected one has; none where no selected one
// has a problem.
std::vector<rules::RuleRef> rulesWithSameProblem(
    const RulesSelection& selection, const ProblemLists& problems);

} // namespace quorvane::workflow
