#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleManager.h"

#include <cstddef>
#include <memory>

namespace quorvane {

// Counts the rules under review that the user has already, and those whose ends the rules file would lose,
// some at a time: for a million it takes longer than a window may stand still. For the thread that owns the
// store.
class PresentRules {
public:
    // `store` must outlive this. System rules of `reviewed` do not count. `lineEnds`: how rules are written.
    PresentRules(const RuleManager& store, std::shared_ptr<const RuleRows> reviewed, LineEnds lineEnds);

    // Looks at up to `rules` more. False when all have been looked at.
    bool countOn(std::size_t rules);

    std::size_t count() const { return m_count; }
    // That whole lines would keep.
    std::size_t countOfCut() const { return m_countOfCut; }

private:
    const RuleManager& m_store;
    const std::shared_ptr<const RuleRows> m_reviewed;
    const LineEnds m_lineEnds;
    std::size_t m_next = 0;
    std::size_t m_count = 0;
    std::size_t m_countOfCut = 0;
};

} // namespace quorvane
