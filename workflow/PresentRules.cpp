#include "workflow/PresentRules.h"

#include "workflow/ImportCells.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

bool isCutBy(const RuleRef& rule, LineEnds lineEnds)
{
    return lineEnds == LineEnds::cut && askRule(rule, [](const auto& record) {
        return !readsBackAsWritten(record.fields(), LineEnds::cut)
            && readsBackAsWritten(record.fields(), LineEnds::whole);
    });
}

} // namespace

PresentRules::PresentRules(
    const RuleManager& store, std::shared_ptr<const RuleRows> reviewed, LineEnds lineEnds)
    : m_store(store)
    , m_reviewed(std::move(reviewed))
    , m_lineEnds(lineEnds)
{
}

bool PresentRules::countOn(std::size_t rules)
{
    const std::size_t all = m_reviewed->count(false);
    const std::size_t end = std::min(all, m_next + rules);
    for (; m_next < end; ++m_next) {
        const RuleRef& rule = m_reviewed->at(m_next, false);
        if (isPresent(m_store, rule))
            ++m_count;
        if (isCutBy(rule, m_lineEnds))
            ++m_countOfCut;
    }
    return m_next < all;
}

} // namespace quorvane
