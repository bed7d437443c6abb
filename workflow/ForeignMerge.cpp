#include "workflow/ForeignMerge.h"

#include "rules/MergedChange.h"
#include "rules/RuleManager.h"

#include <cstddef>
#include <new>
#include <utility>

namespace quorvane::workflow {

ForeignMerge::ForeignMerge(const rules::RuleManager& store, const std::optional<rules::RulesSnapshot>& base)
    : m_stored(store.storedRows())
    , m_ours(store.userRulesSnapshot())
    , m_base(base.value_or(m_ours))
    , m_hasOwnChanges(base.has_value())
{
    if (m_stored->count(false) != m_ours.size())
        throw std::bad_alloc(); // there was no memory for the rows
}

void ForeignMerge::run(const std::vector<rules::RuleValue>& theirs, Order order)
{
    const bool takesOrder = order == Order::theirs && !m_hasOwnChanges;
    merge(m_base.values(), theirs, takesOrder ? rules::Placement::startOfKind : rules::Placement::endOfKind);
    m_theirs = rules::RulesSnapshot(theirs);
}

void ForeignMerge::repeat(
    const std::vector<rules::RuleValue>& before, const std::vector<rules::RuleValue>& after)
{
    merge(before, after, rules::Placement::startOfKind);
}

void ForeignMerge::merge(const std::vector<rules::RuleValue>& base,
    const std::vector<rules::RuleValue>& theirs, rules::Placement placement)
{
    rules::MergeResult merged = mergeRules(base, m_ours.values(), theirs, placement);
    std::vector<rules::RuleRef> ours;
    ours.reserve(m_ours.size());
    for (std::size_t row = 0; row < m_ours.size(); ++row)
        ours.push_back(m_stored->at(row, false));
    m_change = changeTo(merged, ours);
    m_reports = std::move(merged.reports);
}

bool ForeignMerge::isFor(const rules::RuleManager& store) const
{
    return store.hasExactly(*m_stored);
}

} // namespace quorvane::workflow
