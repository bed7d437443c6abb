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

// Changes of many rules at once, decided before anything is done: what would change, what would not, and why
// it may not be. Nothing here changes anything; for the thread that owns the store.

namespace quorvane::workflow {

struct PlannedChange {
    rules::ChangeSet change{}; // empty when nothing has to be done, or may not be
    rules::RulesDifference difference{}; // what it does to the user's rules
    std::size_t unchanged = 0; // rules that needed nothing
    std::vector<std::string> remarks{}; // what the person should know besides, a sentence each
    // Why nothing may be changed; none when it may. A rule would not survive the rules file, this one or
    // another that stands whole in it and would be cut by writing it anew.
    std::optional<std::string> refusal{};
    bool wantsWholeLines = false; // there is no other reason for the refusal than that lines are cut
};

// What is changed of every rule; what is not given stays.
struct RulePatch {
    struct Operations {
        enum Kind { replaced, added, removed };
        Kind kind = replaced;
        std::uint32_t operations = 0;
    };
    std::optional<std::string> tag{}; // double quotes are left out, as the file has no place for them
    std::optional<std::int32_t> ruleClass{}; // PolicyClass; a watch rule stays one, and no other becomes one
    std::optional<Operations> operations{};
    std::optional<std::string> constraint{}; // not of a watch rule, which has none
    // In place of `constraint`: what an import would bind the rule to. Where the program cannot be looked at,
    // the constraint stays.
    bool isBoundToProgram = false;
};

// `rules` are stored rules of the user, in the order of their rows. Two rules that become equal are folded:
// the one that was that rule already stays, else the earlier one; the other is removed. `lineEnds`: how the
// file is written. Reads whole program files when rules are bound to them.
PlannedChange patchingOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const RulePatch& patch, ProgramFacts& facts, rules::LineEnds lineEnds);

// The user's rules of the program at one path become rules of another, also where it stands as parent or
// ancestor. Whole paths; what follows " (-" behind one is kept, and so is the constraint. Folded likewise.
PlannedChange movingOf(const rules::RuleManager& store, const std::string& from, const std::string& to,
    rules::LineEnds lineEnds);

// Copies of `rules` for the program at `program`, which takes the place of the program that each is about; of
// one for every program, that of "any". Each is bound to that program as an import would bind it, and a rule
// of the user whatever it is a copy of. Also for rules of the system.
PlannedChange copyingOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const std::string& program, ProgramFacts& facts, rules::LineEnds lineEnds);

// Adds rules of these values, each at the end of its kind. Those that the user has already, or that stand
// twice, need nothing.
PlannedChange addingOf(
    const rules::RuleManager& store, const std::vector<rules::RuleValue>& values, rules::LineEnds lineEnds);

// Removes these very rules.
PlannedChange removalOf(
    const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds);

// Those of `rules` that can go, in its order: the rules of `gone`, and any other only while a rule that stays
// covers it.
std::vector<rules::RuleRef> dispensableRules(const rules::RuleManager& store,
    const std::vector<rules::RuleRef>& rules, const std::vector<rules::RuleRef>& gone);

// `process` with the program at `from` replaced; as it is when it names another.
std::string movedProcess(const std::string& process, const std::string& from, const std::string& to);

} // namespace quorvane::workflow
