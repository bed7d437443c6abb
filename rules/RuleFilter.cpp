#include "rules/RuleFilter.h"

#include "platform/Unicode.h"

namespace quorvane {

RuleFilter::RuleFilter(const std::vector<RuleRef>& rules)
    : m_rules(rules.size())
{
    constexpr std::size_t roomForPath = 64; // bytes; memory that stays untouched costs nothing
    m_paths.reserve(rules.size(), rules.size() * roomForPath);
    for (const RuleRef& rule : rules) {
        askRule(rule, [this](const auto& record) {
            m_paths.append(record.fields().path.view());
            m_processNames.append(record.fields().processName.view());
        });
        const PolicyRule* policy = policyRuleIn(rule);
        m_tags.append(policy == nullptr ? std::string_view() : policy->fields().tag.view());
    }
}

std::vector<std::uint32_t> RuleFilter::rulesContaining(std::string_view text) const
{
    const std::string key = searchKey(text);
    std::vector<bool> marks(m_rules, false);
    m_paths.markContaining(key, marks);
    m_processNames.markContaining(key, marks);
    m_tags.markContaining(key, marks);
    std::vector<std::uint32_t> found;
    for (std::uint32_t rule = 0; rule < m_rules; ++rule) {
        if (marks[rule])
            found.push_back(rule);
    }
    return found;
}

} // namespace quorvane
