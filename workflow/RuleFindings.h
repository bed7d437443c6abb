#pragma once

#include "rules/RuleManager.h"
#include "rules/RuleRef.h"
#include "workflow/ApplicationValidation.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What is worth telling about a rule. The table colours and explains by it, and the command line checks by
// it.

namespace quorvane {

enum class FindingKind {
    redundant, // another rule covers it
    invalidProgram, // its program is gone or no longer matches
    missingPath, // nothing exists at its path
    doesNotReadBack, // written to a file and read again it would not be the same
};

struct RuleFinding {
    FindingKind kind;
    // The rule that covers a redundant one, as a line of a rules file; empty otherwise.
    std::string coveredBy;
    // What is wrong with an invalid program; none otherwise.
    std::optional<ProgramFault> programFault;
};

// "redundant", "invalid", "missing" or "unwritable".
std::string_view findingName(FindingKind kind);

// A sentence for a person.
std::string findingText(const RuleFinding& finding);

// The rule as a line of a rules file, without the line feed.
std::string ruleText(const RuleRef& rule);

// What becomes of a path that begins with "~/": it is looked up in the home folder, or left alone, since in a
// file from elsewhere it stands for somebody else's.
enum class HomePaths { lookedUp, neverMissing };

// True when the rule names a file or folder, as a user rule other than a suffix, that does not exist. Devices
// and resources other than files are never missing.
bool isPathMissing(const RuleRef& rule, HomePaths homePaths = HomePaths::lookedUp);

// Everything worth telling, in the order of FindingKind. Of a system rule it is never told that it does not
// read back, since it is not written.
std::vector<RuleFinding> findingsForRule(const RuleManager& store, const RuleRef& rule);

// The same without what concerns the program: no program file is read.
std::vector<RuleFinding> pathFindingsForRule(
    const RuleManager& store, const RuleRef& rule, HomePaths homePaths = HomePaths::lookedUp);

} // namespace quorvane
