#pragma once

#include "rules/ChangeSet.h"
#include "rules/PolicyRule.h"
#include "rules/RuleRows.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quorvane::rules {

class RuleManager;

// A reload of a store that another thread prepares: it reads the configuration and finds the change that
// leads there from the rules of the store. Applying that takes time in proportion to the change, while a
// reload takes it in proportion to all rules.
//
// RuleManager makes and applies it. One thread at a time; the store's rules may change in the meantime.
class PreparedReload {
public:
    // `read`: an empty store of the same configuration. `from`: the stored rules to start from.
    PreparedReload(std::unique_ptr<RuleManager> read, std::shared_ptr<const RuleRows> from);
    ~PreparedReload();
    PreparedReload(const PreparedReload&) = delete;
    PreparedReload& operator=(const PreparedReload&) = delete;

    // Reads the configuration and compares. Call it once, on any thread. Throws std::bad_alloc.
    void run();

private:
    friend class RuleManager;

    void compareWith(const RuleRows& read);

    std::unique_ptr<RuleManager> m_read; // holds no rules after the comparison
    std::shared_ptr<const RuleRows> m_from;
    std::optional<ChangeSet> m_change; // none when no change leads to exactly what was read
    std::vector<PolicyRulePtr> m_aged; // rules in both whose age is measured anew
    std::uint64_t m_readAt = 0; // in seconds since 1970
};

} // namespace quorvane::rules
