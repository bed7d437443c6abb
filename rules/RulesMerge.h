#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <optional>
#include <vector>

// Three-way merge of rule lists.
//
// Rules are matched by rule equality; repeated rules are matched by occurrence, the first with the first, the
// second with the second. So the last ones are removed when a side has fewer, and a rule that both sides add
// is added once.
//
// - In both lists: stays. Tag and creation time merge separately: a change by one side is taken, of a change
//   by both, ours.
// - In one list and not in the base: added by that side.
// - In one list and in the base: removed, as by the other side, unless its tag was changed since.
// - The order is ours. A rule that theirs adds is placed directly behind the nearest rule, of whatever kind,
//   before it in theirs that is in the result.

namespace quorvane::rules {

struct MergedRule {
    RuleValue rule;
    std::optional<std::size_t> ours; // its index in ours; none when theirs adds it
    bool isMoved = false; // from ours, but out of the order of ours; only when an undo restores a position
};

// A conflict between the sides.
struct MergeReport {
    enum Kind {
        tagSetOnBothSides, // other: the rule of theirs
        keptForItsTag, // one side removed it, the other changed its tag; other: the rule of the base
        addedWithOtherTag, // both sides added it; other: the rule of theirs
    };
    Kind kind;
    RuleValue kept; // as it is in the result
    RuleValue other;
};

// A rule that both sides have, with tag and creation time merged.
struct MergedMarks {
    RuleValue rule;
    std::optional<MergeReport> report;
};

// `base` is null for a rule that both sides have added.
MergedMarks mergeMarks(const RuleValue* base, const RuleValue& ours, const RuleValue& theirs);

struct MergeResult {
    std::vector<MergedRule> rules;
    std::vector<MergeReport> reports;
};

// The place of rules of theirs when no rule before them in theirs is in the result. Without any rule of that
// kind, watch rules go to the start and policy rules to the end.
enum class Placement {
    endOfKind, // for merges
    // For an undo: base is the state after the undone action, theirs the state before it. Rules that the
    // action moved move back as well. If ours is still the state after the action, the result is the state
    // before it, order included, provided that watch rules come before policy rules there.
    startOfKind,
};

// Pure, any thread; linear memory and time, with a logarithmic factor where an undo moves rules.
MergeResult mergeRules(const std::vector<RuleValue>& base, const std::vector<RuleValue>& ours,
    const std::vector<RuleValue>& theirs, Placement placement = Placement::endOfKind);

} // namespace quorvane::rules
