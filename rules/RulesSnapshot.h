#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace quorvane {

// Rules as they were at one moment, in the order in which they are written. Cheap to copy, never changes, and
// may be used from any thread.
class RulesSnapshot {
public:
    RulesSnapshot() = default;
    explicit RulesSnapshot(std::vector<RuleValue> rules)
        : m_rules(std::make_shared<const std::vector<RuleValue>>(std::move(rules)))
    {
    }

    std::size_t size() const { return m_rules ? m_rules->size() : 0; }

    template <class Use> void forEach(Use use) const
    {
        if (!m_rules)
            return;
        for (const RuleValue& rule : *m_rules)
            use(rule);
    }

private:
    std::shared_ptr<const std::vector<RuleValue>> m_rules;
};

} // namespace quorvane
