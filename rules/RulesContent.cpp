#include "rules/RulesContent.h"

#include "platform/MemoryPages.h"
#include "rules/RuleLine.h"

#include <algorithm>
#include <utility>

namespace quorvane::rules {

RulesContent::RulesContent(LineEnds lineEnds, std::size_t rules, std::uintmax_t bytes)
    : m_lineEnds(lineEnds)
{
    constexpr std::size_t mostOfUsualRule = 1024; // bytes
    const std::uintmax_t most = rules * mostOfUsualRule;
    m_bytes.reserve(std::min(bytes, most) + std::min(bytes, most) / 8); // leaves room for added rules
    platform::useLargePages(m_bytes.data(), m_bytes.capacity());
    m_ends.reserve(rules);
}

template <class Fields> void RulesContent::appendLine(const Fields& rule)
{
    const std::size_t start = m_bytes.size();
    appendRuleLine(m_bytes, rule);
    if (m_lineEnds == LineEnds::cut) {
        const std::size_t end = start + writtenPart(std::string_view(m_bytes).substr(start)).size();
        m_isCut = m_isCut || end < m_bytes.size();
        m_bytes.resize(end);
    }
    m_ends.push_back(m_bytes.size());
}

template void RulesContent::appendLine(const WatchRuleFields& rule);
template void RulesContent::appendLine(const PolicyRuleFields& rule);

RulesContent RulesContent::ofText(std::string text)
{
    RulesContent content(LineEnds::whole);
    content.m_bytes = std::move(text);
    for (std::size_t end = 0; (end = content.m_bytes.find('\n', end)) != std::string::npos;)
        content.m_ends.push_back(++end);
    if (content.m_ends.empty() || content.m_ends.back() < content.m_bytes.size())
        content.m_ends.push_back(content.m_bytes.size());
    return content;
}

void RulesContent::append(const RuleRef& rule)
{
    visitRule(rule, [this](const auto& record) { appendLine(record.fields()); });
}

void RulesContent::clear()
{
    m_bytes.clear();
    m_ends.clear();
}

std::size_t RulesContent::endOfRuleAt(std::size_t position) const
{
    return *std::upper_bound(m_ends.begin(), m_ends.end(), position);
}

} // namespace quorvane::rules
