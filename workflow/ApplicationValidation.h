#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleRef.h"
#include "workflow/RulesPlace.h"

#include <optional>
#include <string>
#include <string_view>

// Whether a rule's program still exists and is still the one that the rule is for; the only implementation,
// for the table and the command line. Any thread that may read the rule.

namespace quorvane::workflow {

// How a constraint identifies a program. Only its length counts, in UTF-16 code units.
enum class ConstraintKind { none, sha1, sha256, team };
ConstraintKind constraintKind(std::string_view constraint);

// Instead of a team: the program belongs to the operating system.
inline constexpr std::string_view platformMarker = "APPLE_PF_BINARY";

enum class ProgramFault {
    missing, // nothing exists at the program's path
    constraintMismatch, // the program does not match the constraint
    parentMissing, // nothing exists at the parent program's path
};

// A few words: "program not found".
std::string_view programFaultWords(ProgramFault fault);

// The fault of the program of a rule that a table shows under `applicationName`, looked up in `place`; none
// when it is valid.
//
// A constraint of 40 characters is the SHA-1 of the program file, one of 64 its SHA-256, any other the team
// that signed it. Deliberate: the marker matches every program, and an uppercase digest none.
std::optional<ProgramFault> programFault(const rules::PolicyRule& rule, std::string_view applicationName,
    const RulesPlace& place = RulesPlace::thisMachine());

// The same under the name that the table shows for the rule's application. A watch rule has no fault.
std::optional<ProgramFault> programFault(
    const rules::RuleRef& rule, const RulesPlace& place = RulesPlace::thisMachine());

bool isValidApplicationPath(const rules::PolicyRule& rule, std::string_view applicationName,
    const RulesPlace& place = RulesPlace::thisMachine());

// True when fault and proof of both rules' programs are the same, since they ask the same of the same
// program.
bool haveSameProgram(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b);

// How far the team name is proven that satisfies the constraint of a rule without a fault. `proven` for every
// rule whose constraint is not a team. Reads the whole program.
TeamProof teamProof(const rules::RuleRef& rule, const RulesPlace& place = RulesPlace::thisMachine());

// A few words: "its code is not what was signed". None when it is proven.
std::string_view teamProofWords(TeamProof proof);

} // namespace quorvane::workflow
