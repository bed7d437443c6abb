#include "rules/PolicyGroup.h"

#include <algorithm>
#include <new>

namespace quorvane::rules {

const PolicyRule* PolicyGroup::firstCovering(const PolicyRule& rule) const
{
    try {
        indexCovering();
        return m_coverIndex->firstCovering(rule);
    } catch (const std::bad_alloc&) {
        // Without memory for an index, a scan gives the same result.
        m_coverIndex.reset();
        const auto& slots = m_rules.slots();
        const auto found = std::find_if(slots.begin(), slots.end(), [&rule](const PolicyRulePtr& stored) {
            return stored && stored.get() != &rule && coversRule(*stored, rule);
        });
        return found == slots.end() ? nullptr : found->get();
    }
}

void PolicyGroup::indexCovering() const
{
    if (!m_coverIndex || m_coverIndex->isOutworn())
        m_coverIndex = std::make_unique<CoverIndex>(m_rules.slots());
}

void PolicyGroup::slotIsFilled(std::size_t slot, const PolicyRuleFields& rule) noexcept
{
    try {
        if (m_coverIndex)
            m_coverIndex->add(slot, rule);
    } catch (const std::bad_alloc&) {
        m_coverIndex.reset();
    }
}

void PolicyGroup::slotIsEmptied(std::size_t slot, const PolicyRuleFields& rule) noexcept
{
    try {
        if (m_coverIndex)
            m_coverIndex->remove(slot, rule);
    } catch (const std::bad_alloc&) {
        m_coverIndex.reset();
    }
}

} // namespace quorvane::rules
