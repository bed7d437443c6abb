#pragma once

#include "rules/ChangeSet.h"
#include "rules/RuleRows.h"
#include "rules/RulesMerge.h"
#include "rules/RulesSnapshot.h"

#include <memory>
#include <optional>
#include <vector>

namespace quorvane::rules {
class RuleManager;
} // namespace quorvane::rules

namespace quorvane::workflow {

// Merges rules into those of a store: what another program has written, or what the rules were before or
// after a version. Made by the thread that owns the store, where it is cheap; another may run it while the
// store goes on. Throws std::bad_alloc.
class ForeignMerge {
public:
    // `base`: the rules that both have started from; none: those of the store, which has no changes of its
    // own.
    ForeignMerge(const rules::RuleManager& store, const std::optional<rules::RulesSnapshot>& base);

    // Whose order the result has. Theirs, as after a reload, only where the store has no changes of its own.
    enum class Order { ours, theirs };

    // Any thread; one of these, once. The second makes the change from `before` to `after`.
    void run(const std::vector<rules::RuleValue>& theirs, Order order);
    void repeat(const std::vector<rules::RuleValue>& before, const std::vector<rules::RuleValue>& after);

    // True when the change is for the store's present rules: they have not changed since the construction.
    bool isFor(const rules::RuleManager& store) const;

    // Afterwards: the change to make to the store, what both sides have changed, and the merged rules of the
    // other program.
    const rules::ChangeSet& change() const { return m_change; }
    const std::vector<rules::MergeReport>& reports() const { return m_reports; }
    const rules::RulesSnapshot& theirs() const { return m_theirs; }

private:
    void merge(const std::vector<rules::RuleValue>& base, const std::vector<rules::RuleValue>& theirs,
        rules::Placement placement);

    std::shared_ptr<const rules::RuleRows> m_stored;
    rules::RulesSnapshot m_ours;
    rules::RulesSnapshot m_base;
    bool m_hasOwnChanges;
    rules::RulesSnapshot m_theirs;
    rules::ChangeSet m_change;
    std::vector<rules::MergeReport> m_reports;
};

} // namespace quorvane::workflow
