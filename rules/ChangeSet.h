#pragma once

#include "rules/RuleRef.h"
#include "rules/RuleValue.h"

#include <memory>
#include <optional>
#include <vector>

namespace quorvane::rules {

struct WholeRules;

// A change of the store as a value: removals, changes in place and additions, applied in this order. Rules
// are identified by their records, so the same record may be in `removed` and in `added`: an edited rule is
// removed and added again with another value. For the thread that owns the store; one that no longer changes
// may be shared with others, which read its values.
struct ChangeSet {
    // A rule's position among the rules of its application group, or among the watch rules.
    struct Place {
        enum Kind { end, start, behind };
        Kind kind = end;
        std::optional<RuleRef> rule{}; // for `behind`: the stored rule that it follows; without one, the end
    };
    struct Addition {
        RuleRef rule; // this record is stored, not a copy
        RuleValue value; // its new value; of the record's kind
        Place place{};
    };
    struct Removal {
        RuleRef rule;
        Place place{}; // its position; filled in by RuleManager::apply(), as is its value
        RuleValue value{};
    };
    // The record keeps its position.
    struct Change {
        RuleRef rule;
        RuleValue before; // filled in by RuleManager::apply()
        RuleValue after; // of the record's kind
    };

    // All rules of the user, removed or put back (WholeRules.h). Stands for a removal or addition of each.
    struct Whole {
        bool isRemoval = true;
        std::shared_ptr<const WholeRules> rules; // never null
    };

    std::vector<Removal> removed{};
    std::vector<Change> changed{};
    std::vector<Addition> added{};
    std::optional<Whole> whole{}; // if so, the others are empty

    bool isEmpty() const { return removed.empty() && changed.empty() && added.empty() && !whole; }

    // The change that reverts this one. Only for a change returned by RuleManager::apply().
    ChangeSet inverted() const;
};

} // namespace quorvane::rules
