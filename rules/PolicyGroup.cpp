#include "rules/PolicyGroup.h"

namespace quorvane {

const PolicyRule* PolicyGroup::firstCovering(const PolicyRule& rule) const
{
    if (!m_coverIndex)
        m_coverIndex = std::make_unique<CoverIndex>();
    return m_coverIndex->firstCovering(rule, m_rules);
}

} // namespace quorvane
