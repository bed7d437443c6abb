#pragma once

#include "workflow/RuleDraft.h"
#include "workflow/RulesPlace.h"

#include <cstdint>
#include <string>
#include <string_view>

// The decisions of the two rule editors, and how they save. User interface thread only.

namespace quorvane::workflow {

class RulesDocument;

// True when a rule with these texts may be saved. Deliberate: only checks that they are not empty; neither
// their contents nor the constraint or operations count.
bool isCompleteRule(std::string_view path, std::string_view processName);

// The type that a path suggests: a suffix when it begins with ".", else a prefix when it ends with "/", else
// a path; so ".a/" is a suffix.
std::int32_t policyTypeForPath(std::string_view path);

// The label of a constraint: "SHA1", "SHA256" or "Team ID". Only its length counts.
std::string_view constraintLabel(std::string_view constraint);

// The icon for the program of a process string.
struct ProgramIcon {
    enum class Kind { none, lock, file };
    Kind kind = Kind::none;
    std::string file{}; // the file with the icon; for Kind::file only
};

// The lock for "any"; none when no file exists at the program's path in `place`.
ProgramIcon iconForProcess(
    const std::string& processName, const RulesPlace& place = RulesPlace::thisMachine());

// Where a file panel starts: `text`, or `fallback` when the text is empty or "any".
std::string panelStart(std::string_view text, std::string_view fallback);

// Removes the rule from the store, adds the same record with the values of the draft, and writes the user's
// file. A rule that is not stored, because it is new or was deleted in the meantime, is added as well; one
// that the store has read again is replaced if it is still equal. Deliberate: failures are ignored, including
// that of the write.
void saveRule(RulesDocument& document, const rules::RuleRef& rule, const RuleDraft& draft);

} // namespace quorvane::workflow
