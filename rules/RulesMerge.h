#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <optional>
#include <vector>

// Brings together what two sides did to the same rules.
//
// A rule is known by rule equality; of rules that stand more than once the first is known by the first, the
// second by the second. So the last ones go when a side has fewer, and what both sides add counts once.
//
// - In both lists: stays. Tag and creation time merge one by one: what one side alone has changed is taken,
//   where both have changed it ours is.
// - In one list and not in the base: added by that side.
// - In one list and in the base: removed by the other side, and goes; unless its tag was changed since.
// - The order is ours. What theirs adds stands immediately behind what precedes it in theirs and is in the
//   result, of whatever kind.

namespace quorvane::rules {

struct MergedRule {
    RuleValue rule;
    std::optional<std::size_t> ours; // the number in ours of the rule that it is; none when theirs adds it
    bool isMoved = false; // ours, and no longer in the order of ours; only when an undo restores a place
};

// Where the sides disagreed.
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

// Where rules of theirs stand before which nothing of theirs is in the result. Without any rule of that kind,
// watch rules stand at the start and policy rules at the end.
enum class Placement {
    endOfKind, // for merges
    // For an undo: base is what the undone action left, theirs what it found. Rules that the action moved go
    // back as well. When ours is still what the action left, the result is what it found, order included, as
    // long as watch rules stand before policy rules there.
    startOfKind,
};

// Pure, from any thread; memory in proportion to the rules, and so is time, but for a logarithm where an undo
// moves rules.
MergeResult mergeRules(const std::vector<RuleValue>& base, const std::vector<RuleValue>& ours,
    const std::vector<RuleValue>& theirs, Placement placement = Placement::endOfKind);

} // namespace quorvane::rules
