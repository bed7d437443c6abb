#pragma once

#include "rules/RuleRows.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::workflow {

// The selected rows of a table at one moment, as ranges of immutable rows. A value object, cheap however many
// rows there are; any thread.
class RulesSelection {
public:
    // The rows from the first up to, not including, the second.
    using Range = std::pair<std::size_t, std::size_t>;

    RulesSelection() = default;
    // `ranges` must be ascending and disjoint.
    RulesSelection(
        std::shared_ptr<const rules::RuleRows> rows, bool includeSystemRules, std::vector<Range> ranges);

    std::size_t count() const;
    // The selected rule if it is the only one; none otherwise.
    std::optional<rules::RuleRef> onlyRule() const;

    // Calls `use` with every rule from the top down.
    template <class Use> void forEach(const Use& use) const
    {
        for (const auto& [first, end] : m_ranges) {
            for (std::size_t row = first; row < end; ++row)
                use(m_rows->at(row, m_includeSystemRules));
        }
    }

    // The same with every rule of the table, selected or not.
    template <class Use> void forEachShown(const Use& use) const
    {
        const std::size_t count = m_rows ? m_rows->count(m_includeSystemRules) : 0;
        for (std::size_t row = 0; row < count; ++row)
            use(m_rows->at(row, m_includeSystemRules));
    }

private:
    std::shared_ptr<const rules::RuleRows> m_rows;
    bool m_includeSystemRules = false;
    std::vector<Range> m_ranges;
};

// Describes several rules, in sentences: "3 rules: 2 allow, 1 watch. Programs: Mail, sh." Any thread; linear
// in the number of rules.
std::string selectionSummary(const RulesSelection& selection);

} // namespace quorvane::workflow
