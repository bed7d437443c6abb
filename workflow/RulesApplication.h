#pragma once

#include "rules/ChangeSet.h"
#include "rules/RulesDiff.h"

#include <cstddef>
#include <string>
#include <vector>

// Ensures that given rules are present, or absent, whatever the current rules: idempotent. Computes the
// change without applying it; for the thread that owns the rules.

namespace quorvane::workflow {

// A rule that is to be present, or absent.
struct WantedRule {
    rules::RuleValue rule;
    // If false, an existing equal rule keeps its own; a new one gets that of `rule`.
    bool hasTag = true;
    bool hasCreated = true;
};

struct RulesApplication {
    rules::ChangeSet change{};
    rules::RulesDifference difference{}; // the same for display
    std::size_t unchanged = 0; // wanted rules that needed nothing
};

// The change that makes a store with the user rules `present` (its userRules()) contain every wanted rule,
// and no other rule with a tag of `prunedTags`. No two wanted rules may be equal.
RulesApplication presenceOf(const std::vector<WantedRule>& wanted, const std::vector<rules::RuleRef>& present,
    const std::vector<std::string>& prunedTags);

// The change that makes it contain none of them.
RulesApplication absenceOf(const std::vector<WantedRule>& wanted, const std::vector<rules::RuleRef>& present);

} // namespace quorvane::workflow
