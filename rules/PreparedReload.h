#pragma once

#include "rules/ChangeSet.h"
#include "rules/PolicyRule.h"
#include "rules/RuleRows.h"
#include "rules/StoreSuccession.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quorvane::rules {

class RuleManager;
class RuleStore;

// A reload of a store that another thread prepares: it reads the configuration and finds the change that
// leads there from the rules of the store. Applying that takes time in proportion to the change, while a
// reload takes it in proportion to all rules. Where much differs, what was read takes the place of the store.
//
// RuleManager makes and applies it. One thread at a time; the store's rules may change in the meantime.
class PreparedReload {
public:
    // `read`: an empty store of the same configuration. `from`: the stored rules to start from. From
    // `manySteps` removals, changes and additions on, the store is replaced.
    PreparedReload(
        std::unique_ptr<RuleManager> read, std::shared_ptr<const RuleRows> from, std::size_t manySteps);
    // Frees the rules that are gone; many should not be freed by a thread that somebody waits for.
    ~PreparedReload();
    PreparedReload(const PreparedReload&) = delete;
    PreparedReload& operator=(const PreparedReload&) = delete;

    // Reads the configuration and compares. Call it once, on any thread. Throws std::bad_alloc.
    void run();

    // The rules that it started from.
    const RuleRows& from() const { return *m_from; }
    // How many rules of the user are not there any more.
    std::size_t lostUserRules() const { return m_lostUserRules; }

private:
    friend class RuleManager;

    void compareWith(std::unique_ptr<RuleStore> read);
    bool isPossible() const { return m_change || m_succession; }

    std::unique_ptr<RuleManager> m_read; // what was read besides the rules
    std::shared_ptr<const RuleRows> m_from;
    const std::size_t m_manySteps;
    std::size_t m_lostUserRules = 0;
    std::optional<StoreSuccession> m_succession; // where much differs
    std::optional<ChangeSet> m_change; // else; none when no change leads to exactly what was read
    std::vector<PolicyRulePtr> m_aged; // rules in both whose age is measured anew
    std::uint64_t m_readAt = 0; // in seconds since 1970
};

} // namespace quorvane::rules
