#include "rules/ChangeSet.h"

#include <algorithm>
#include <iterator>

namespace quorvane::rules {

// In reverse order: each removal recorded the position at its time, so the first one is undone last.
ChangeSet ChangeSet::inverted() const
{
    ChangeSet inverse;
    if (whole)
        inverse.whole = Whole{!whole->isRemoval, whole->rules};
    inverse.removed.reserve(added.size());
    inverse.changed.reserve(changed.size());
    inverse.added.reserve(removed.size());
    std::transform(
        added.rbegin(), added.rend(), std::back_inserter(inverse.removed), [](const Addition& addition) {
            return Removal{addition.rule, addition.place, addition.value};
        });
    std::transform(
        changed.rbegin(), changed.rend(), std::back_inserter(inverse.changed), [](const Change& change) {
            return Change{change.rule, change.after, change.before};
        });
    std::transform(
        removed.rbegin(), removed.rend(), std::back_inserter(inverse.added), [](const Removal& removal) {
            return Addition{removal.rule, removal.value, removal.place};
        });
    return inverse;
}

} // namespace quorvane::rules
