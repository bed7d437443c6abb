#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleRef.h"
#include "workflow/RulesPlace.h"

#include <optional>
#include <string>
#include <string_view>

// Whether a rule's program is still there and is still the one that the rule is for. The table and the
// command line ask here and nowhere else. Any thread that may read the rule.

namespace quorvane::workflow {

// What a constraint pins a program by. Only its length counts, in UTF-16 code units.
enum class ConstraintKind { none, sha1, sha256, team };
ConstraintKind constraintKind(std::string_view constraint);

// In place of a team: the program is one of the operating system's.
inline constexpr std::string_view platformMarker = "APPLE_PF_BINARY";

enum class ProgramFault {
    missing, // nothing exists at the program's path
    constraintMismatch, // the program is not the one that the constraint pins
    parentMissing, // nothing exists at the parent program's path
};

// A few words: "program not found".
std::string_view programFaultWords(ProgramFault fault);

// What is wrong with the program of a rule that a table shows under `applicationName`, looked up in `place`;
// none when it is valid.
//
// A constraint of 40 characters is the SHA-1 of the program file, one of 64 its SHA-256, any other the team
// that has signed it. Deliberate: the marker passes for every program, and a digest in capitals for none.
std::optional<ProgramFault> programFault(const rules::PolicyRule& rule, std::string_view applicationName,
    const RulesPlace& place = RulesPlace::thisMachine());

// The same under the name that the table gives to the rule's application. A watch rule has no fault.
std::optional<ProgramFault> programFault(
    const rules::RuleRef& rule, const RulesPlace& place = RulesPlace::thisMachine());

bool isValidApplicationPath(const rules::PolicyRule& rule, std::string_view applicationName,
    const RulesPlace& place = RulesPlace::thisMachine());

// What the team's name is worth that satisfies the constraint of a rule without a fault. Proven for every
// rule whose constraint no team has to satisfy. Reads the whole program.
TeamProof teamProof(const rules::RuleRef& rule, const RulesPlace& place = RulesPlace::thisMachine());

// A few words: "its code is not what was signed". None when it is proven.
std::string_view teamProofWords(TeamProof proof);

} // namespace quorvane::workflow
