#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleRef.h"
#include "rules/RuleValue.h"
#include "workflow/RuleFindings.h"

#include <optional>
#include <string>
#include <vector>

// A rule's problem as shown to the user: what is wrong, why it matters, and how to fix it.

namespace quorvane::workflow {

struct RuleProblem {
    // How the user can fix it, besides editing the rule.
    enum class Fix {
        none,
        drop, // remove the rule
        chooseProgram, // change the rules to the program's new path
        chooseParent, // the same for the parent program
        rebind, // bind the rule to the program in its current state
    };

    FindingKind kind;
    std::string text; // "Program is gone: nothing exists at /bin/old."
    std::string help; // a sentence or two
    Fix fix = Fix::none;
};

// The problem for a finding of a rule. May read the whole program. Any thread.
RuleProblem problemOf(const rules::RuleValue& rule, const RuleFinding& finding, const RulesPlace& place,
    rules::LineEnds lineEnds);

// The problems that involve no other rule, in the order of FindingKind. May read the whole program. Any
// thread.
std::vector<RuleProblem> problemsOfRuleAlone(
    const rules::RuleValue& rule, const RulesPlace& place, rules::LineEnds lineEnds);

// The problem of a rule that `other` covers or overlaps, according to `kind`.
RuleProblem problemWith(FindingKind kind, const rules::RuleValue& other);

// The stored rule that covers a stored one; none when there is none. For the store's thread.
std::optional<rules::RuleRef> storedCoveringRule(const rules::RuleManager& store, const rules::RuleRef& rule);

} // namespace quorvane::workflow
