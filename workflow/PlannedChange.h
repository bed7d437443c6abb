#pragma once

#include "rules/ChangeSet.h"
#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "rules/RulesDiff.h"
#include "workflow/ProgramFacts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// A bulk change of rules, planned before it is applied: what would change, what would not, and why it may be
// refused. Planning changes nothing. For the thread that owns the store.

namespace quorvane::workflow {

struct PlannedChange {
    rules::ChangeSet change{}; // empty when nothing needs to be done, or it is refused
    rules::RulesDifference difference{}; // what it does to the user's rules
    std::size_t unchanged = 0; // rules that needed nothing
    std::vector<std::string> remarks{}; // remarks for the user, a sentence each
    // Why the change is refused; none when it is not. A rule would not survive writing: a changed one, or
    // another that is complete in the file and would be cut by rewriting it.
    std::optional<std::string> refusal{};
    bool wantsWholeLines = false; // lines being cut are the only reason for the refusal
};

// The properties to change in every rule; absent ones stay.
struct RulePatch {
    struct Operations {
        enum Kind { replaced, added, removed };
        Kind kind = replaced;
        std::uint32_t operations = 0;
    };
    std::optional<std::string> tag{}; // double quotes are removed, since the file cannot represent them
    std::optional<std::int32_t>
        ruleClass{}; // PolicyClass; policy rules cannot become watch rules or vice versa
    std::optional<Operations> operations{};
    std::optional<std::string> constraint{}; // ignored for watch rules, which have none
    // Instead of `constraint`: the constraint that an import would set. If the program cannot be read, the
    // constraint stays.
    bool isBoundToProgram = false;
};

// `rules` are stored rules of the user, in row order. Rules that become equal are merged: the one that
// already was that rule stays, else the earlier one; the other is removed. `lineEnds`: how the file is
// written. Reads whole program files when rules are bound to them.
PlannedChange patchingOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const RulePatch& patch, ProgramFacts& facts, rules::LineEnds lineEnds);

// Changes the user's rules of the program at path `from` to `to`, also where it is the parent or ancestor.
// Matches whole paths; keeps text from " (-" on and the constraint. Equal rules are merged likewise.
PlannedChange movingOf(const rules::RuleManager& store, const std::string& from, const std::string& to,
    rules::LineEnds lineEnds);

// Copies `rules` for the program at `program`, which replaces the program of each, or "any". Each copy is
// bound to that program as by an import, and is a user rule even if the original is a system rule.
PlannedChange copyingOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const std::string& program, ProgramFacts& facts, rules::LineEnds lineEnds);

// Adds rules of these values, each at the end of its kind. Those that the user already has, and duplicates,
// are skipped.
PlannedChange addingOf(
    const rules::RuleManager& store, const std::vector<rules::RuleValue>& values, rules::LineEnds lineEnds);

// Removes exactly these rules, not equal ones.
PlannedChange removalOf(
    const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds);

// Those of `rules` that can be removed, in order: the rules of `gone`, and any other only while a rule that
// stays covers it.
std::vector<rules::RuleRef> dispensableRules(const rules::RuleManager& store,
    const std::vector<rules::RuleRef>& rules, const std::vector<rules::RuleRef>& gone);

// `process` with the program at `from` replaced; unchanged when it names another.
std::string movedProcess(const std::string& process, const std::string& from, const std::string& to);

} // namespace quorvane::workflow
