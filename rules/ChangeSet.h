#pragma once

#include "rules/RuleRef.h"
#include "rules/RuleValue.h"

#include <optional>
#include <vector>

namespace quorvane::rules {

// A change of the store as a value: what goes, what changes where it stands, what comes; applied in this
// order. Rules are named by their records, so the same record may stand in `removed` and in `added`: an
// edited rule goes and comes back with another value.
struct ChangeSet {
    // Where a rule stands among the rules of its application group, or among the watch rules.
    struct Place {
        enum Kind { end, start, behind };
        Kind kind = end;
        std::optional<RuleRef> rule{}; // of `behind`: the stored rule that it follows; else the end
    };
    struct Addition {
        RuleRef rule; // the very record that is stored from then on
        RuleValue value; // which it then has; of the record's kind
        Place place{};
    };
    struct Removal {
        RuleRef rule;
        Place place{}; // where it stood; filled in by RuleManager::apply(), as is the value that it had
        RuleValue value{};
    };
    // The record stays stored where it is.
    struct Change {
        RuleRef rule;
        RuleValue before; // filled in by RuleManager::apply()
        RuleValue after; // of the record's kind
    };

    std::vector<Removal> removed{};
    std::vector<Change> changed{};
    std::vector<Addition> added{};

    bool isEmpty() const { return removed.empty() && changed.empty() && added.empty(); }

    // What takes this change back. Only of what RuleManager::apply() answered.
    ChangeSet inverted() const;
};

} // namespace quorvane::rules
