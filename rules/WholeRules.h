#pragma once

#include "rules/ChangeSet.h"
#include "rules/RuleRows.h"
#include "rules/RulesSnapshot.h"

#include <memory>

namespace quorvane::rules {

class RuleStore;

// All rules of the user at one moment, as a store held them. Immutable; its values may be read from any
// thread, its records by that of the store.
struct WholeRules {
    std::shared_ptr<const RuleRows> rows; // all rules in stored order, system rules too
    RulesSnapshot values; // of the user's rules, in the same order
};

// The same change with a removal or addition for each rule. Throws std::bad_alloc.
ChangeSet ruleByRule(const ChangeSet::Whole& change);

// Removes all rules of the user at once, and puts them back, by exchanging a store for one without them,
// which takes as long for a million rules as for none. For the thread that owns the stores.
class StoreExchange {
public:
    // Performs the change on the store `inUse`, never null. False, and nothing has changed, when the rules
    // are not those that the change was made for, so that it has to be done rule by rule. Throws
    // std::bad_alloc.
    bool perform(std::unique_ptr<RuleStore>& inUse, const ChangeSet::Whole& change);

    // Call it before any other change. Destroys the rules put aside when no change is left that would put
    // them back.
    void dropUnneeded();

private:
    std::weak_ptr<const WholeRules> m_removed;
    std::unique_ptr<RuleStore> m_putAside; // with the removed rules
};

} // namespace quorvane::rules
