#include "rules/RulesContent.h"

#include "rules/RuleLine.h"

#include <algorithm>

namespace quorvane {

template <class Fields> void RulesContent::appendLine(const Fields& rule)
{
    const std::size_t start = m_bytes.size();
    appendRuleLine(m_bytes, rule);
    if (m_lineEnds == LineEnds::cut)
        m_bytes.resize(start + writtenPart(std::string_view(m_bytes).substr(start)).size());
    m_ends.push_back(m_bytes.size());
}

template void RulesContent::appendLine(const WatchRuleFields& rule);
template void RulesContent::appendLine(const PolicyRuleFields& rule);

void RulesContent::append(const RuleRef& rule)
{
    askRule(rule, [this](const auto& record) { appendLine(record.fields()); });
}

std::size_t RulesContent::endOfRuleAt(std::size_t position) const
{
    return *std::upper_bound(m_ends.begin(), m_ends.end(), position);
}

} // namespace quorvane
