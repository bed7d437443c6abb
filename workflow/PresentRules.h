#pragma once

#include "rules/RuleManager.h"

#include <cstddef>
#include <memory>

namespace quorvane {

// Counts the rules under review that the user has already, some at a time: for a million it takes longer than
// a window may stand still. For the thread that owns the store.
class PresentRules {
public:
    // `store` must outlive this. System rules of `reviewed` do not count.
    PresentRules(const RuleManager& store, std::shared_ptr<const RuleRows> reviewed);

    // Looks at up to `rules` more. False when all have been looked at.
    bool countOn(std::size_t rules);

    std::size_t count() const { return m_count; }

private:
    const RuleManager& m_store;
    const std::shared_ptr<const RuleRows> m_reviewed;
    std::size_t m_next = 0;
    std::size_t m_count = 0;
};

} // namespace quorvane
