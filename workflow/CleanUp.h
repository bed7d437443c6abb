#pragma once

#include "platform/Mounts.h"
#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "workflow/KnownProblems.h"
#include "workflow/PlannedChange.h"

#include <string>
#include <string_view>
#include <vector>

// Which rules can be removed, and which of those might be needed again.

namespace quorvane::workflow {

// A rule without effect.
struct DispensableRule {
    rules::RuleRef rule;
    FindingKind kind; // redundant, or a missing program or path
    std::string reason; // a sentence
    std::string doubt{}; // why it might be needed again, in a few words; empty when it will not
};

// Places whose files may be temporarily absent.
struct ChangingPlaces {
    std::vector<platform::Mount> mounts{}; // those of this machine; empty when another machine is examined
    std::string home{}; // the user's home folder
};

// Why a file missing at `path` may come back: "on a volume that is not mounted". Empty when there is no
// reason. `facts` are those of the place that the path belongs to.
std::string whyItMayComeBack(const std::string& path, const ChangingPlaces& places, ProgramFacts& facts);

// The user's rules without effect, each once: those whose program is missing, those whose path is missing,
// and redundant ones; each in stored order. Of several reasons one without doubt is reported. A different
// program at the same path is not missing. Any thread.
std::vector<DispensableRule> cleanUpCandidates(
    const ProblemLists& problems, const ChangingPlaces& places, const RulesPlace& place);

// Adds a doubt to the redundant rules that cannot be removed together with all undoubted ones: of rules that
// cover each other one stays. For the store's thread.
void doubtWhatMustStay(const rules::RuleManager& store, std::vector<DispensableRule>& candidates);

// Removes those of the rules that can be removed together: of rules that cover each other one stays, and so
// does a redundant one when the rule covering it is removed. Remarks report those that stay. For the store's
// thread.
PlannedChange cleaningUp(
    const rules::RuleManager& store, const std::vector<DispensableRule>& chosen, rules::LineEnds lineEnds);

} // namespace quorvane::workflow
