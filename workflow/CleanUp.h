#pragma once

#include "platform/Mounts.h"
#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "workflow/KnownProblems.h"
#include "workflow/PlannedChange.h"

#include <string>
#include <string_view>
#include <vector>

// Which rules can go, and which of those might be wanted again.

namespace quorvane::workflow {

// A rule that has nothing to do.
struct DispensableRule {
    rules::RuleRef rule;
    FindingKind kind; // redundant, or what is gone: the program or the path
    std::string reason; // a sentence
    std::string doubt{}; // why it might be wanted again, in a few words; empty when it will not
};

// Where files come and go.
struct ChangingPlaces {
    std::vector<platform::Mount> mounts{}; // those of this machine; none where it is about another one
    std::string home{}; // the person's home folder
};

// Why what is not at `path` may be there another time: "on a volume that is not mounted". Empty when nothing
// speaks for it. `facts` tell of the place that the path belongs to.
std::string whyItMayComeBack(const std::string& path, const ChangingPlaces& places, ProgramFacts& facts);

// The user's rules that have nothing to do, each once: those whose program is gone, those whose path is, and
// redundant ones; each in stored order. Of several reasons the one without doubt is reported. A program that
// is there but another one is not gone. Any thread.
std::vector<DispensableRule> cleanUpCandidates(
    const ProblemLists& problems, const ChangingPlaces& places, const RulesPlace& place);

// Doubts the redundant rules that cannot go together with all others that nothing speaks against: of rules
// that cover each other one stays. For the store's thread.
void doubtWhatMustStay(const rules::RuleManager& store, std::vector<DispensableRule>& candidates);

// Removes those of the rules that can go together: of rules that cover each other one stays, and so does a
// redundant one when what covers it goes. Remarks tell of those. For the store's thread.
PlannedChange cleaningUp(
    const rules::RuleManager& store, const std::vector<DispensableRule>& chosen, rules::LineEnds lineEnds);

} // namespace quorvane::workflow
