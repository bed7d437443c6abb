#pragma once

#include "rules/ChangeSet.h"
#include "rules/RulesDiff.h"

#include <cstddef>
#include <string>
#include <vector>

// Makes the user's rules hold, or not hold, given ones, whatever they hold now: doing it again changes
// nothing. Pure.

namespace quorvane::workflow {

// A rule that is to be there, or not to be there.
struct WantedRule {
    rules::RuleValue rule;
    // Without these an equal rule that is there keeps its own; a new one has those of `rule`.
    bool hasTag = true;
    bool hasCreated = true;
};

struct RulesApplication {
    rules::ChangeSet change{};
    rules::RulesDifference difference{}; // the same for people
    std::size_t unchanged = 0; // wanted rules that needed nothing
};

// What makes the store with the rules `present`, as its userRules() are, hold every wanted rule, and no other
// one with a tag out of `prunedTags`. No two wanted rules are equal.
RulesApplication presenceOf(const std::vector<WantedRule>& wanted, const std::vector<rules::RuleRef>& present,
    const std::vector<std::string>& prunedTags);

// What makes it hold none of them.
RulesApplication absenceOf(const std::vector<WantedRule>& wanted, const std::vector<rules::RuleRef>& present);

} // namespace quorvane::workflow
