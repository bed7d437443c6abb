#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleRef.h"
#include "rules/RuleValue.h"
#include "workflow/RuleFindings.h"

#include <optional>
#include <string>
#include <vector>

// A rule's problems as a person meets them: what is wrong, why it matters, and what mends it.

namespace quorvane::workflow {

struct RuleProblem {
    // What a person can do about it, besides editing the rule.
    enum class Mending {
        none,
        drop, // the rule can go
        chooseProgram, // the rules follow their program to its new place
        chooseParent, // the same of the parent program
        bindAnew, // the rule is bound to the program as it is now
    };

    FindingKind kind;
    std::string text; // "Program is gone: nothing exists at /bin/old."
    std::string help; // a sentence or two
    Mending mending = Mending::none;
};

// The problem of a rule that `finding` is about. May read the whole program. Any thread.
RuleProblem problemOf(const rules::RuleValue& rule, const RuleFinding& finding, const RulesPlace& place,
    rules::LineEnds lineEnds);

// The problems that the rule alone shows, in the order of FindingKind. May read the whole program. Any
// thread.
std::vector<RuleProblem> problemsOfRuleAlone(
    const rules::RuleValue& rule, const RulesPlace& place, rules::LineEnds lineEnds);

// The problem of a rule that `other` covers, or overlaps, as `kind` says.
RuleProblem problemWith(FindingKind kind, const rules::RuleValue& other);

// The stored rule that covers a stored one; none when none does. For the store's thread.
std::optional<rules::RuleRef> storedCoveringRule(const rules::RuleManager& store, const rules::RuleRef& rule);

} // namespace quorvane::workflow
