#pragma once

#include "workflow/RuleDraft.h"
#include "workflow/RulesPlace.h"

#include <cstdint>
#include <string>
#include <string_view>

// What the two rule editors decide, and how they save. User interface thread only.

namespace quorvane::workflow {

class RulesDocument;

// True when a rule with these texts may be saved. Deliberate: nothing but their emptiness counts; not what
// they say, not the constraint, not the operations.
bool isCompleteRule(std::string_view path, std::string_view processName);

// The type that a path suggests: a suffix when it begins with ".", else a prefix when it ends with "/", else
// a path; so ".a/" is a suffix.
std::int32_t policyTypeForPath(std::string_view path);

// What a constraint is called: "SHA1", "SHA256" or "Team ID". Only its length counts.
std::string_view constraintLabel(std::string_view constraint);

// The icon that stands for the program of a process string.
struct ProgramIcon {
    enum class Kind { none, lock, file };
    Kind kind = Kind::none;
    std::string file{}; // whose icon is meant; for Kind::file only
};

// The lock for "any"; none when no file exists at the program's path in `place`.
ProgramIcon iconForProcess(
    const std::string& processName, const RulesPlace& place = RulesPlace::thisMachine());

// Where a file panel starts: `text`, or `fallback` when the text is empty or "any".
std::string panelStart(std::string_view text, std::string_view fallback);

// Takes the rule out of the store and adds the very same record with what the draft says; writes the user's
// file. A rule that the store does not hold, because it is new or was deleted meanwhile, is added all the
// same; one that the store has read anew is replaced as long as it is still equal. Deliberate: failures are
// not looked at, the file's included.
void saveRule(RulesDocument& document, const rules::RuleRef& rule, const RuleDraft& draft);

} // namespace quorvane::workflow
