#include "workflow/PresentRules.h"

#include "workflow/ImportCells.h"

#include <algorithm>
#include <utility>

namespace quorvane {

PresentRules::PresentRules(const RuleManager& store, std::shared_ptr<const RuleRows> reviewed)
    : m_store(store)
    , m_reviewed(std::move(reviewed))
{
}

bool PresentRules::countOn(std::size_t rules)
{
    const std::size_t all = m_reviewed->count(false);
    const std::size_t end = std::min(all, m_next + rules);
    for (; m_next < end; ++m_next) {
        if (isPresent(m_store, m_reviewed->at(m_next, false)))
            ++m_count;
    }
    return m_next < all;
}

} // namespace quorvane
