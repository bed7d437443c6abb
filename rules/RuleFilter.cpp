#include "rules/RuleFilter.h"

#include "platform/Unicode.h"

#include <future>

namespace quorvane {

bool policyRuleContains(const PolicyRule& rule, std::string_view text)
{
    const std::string key = searchKey(text);
    const PolicyRuleFields& fields = rule.fields();
    return searchKey(fields.path.view()).find(key) != std::string::npos
        || searchKey(fields.processName.view()).find(key) != std::string::npos
        || searchKey(fields.tag.view()).find(key) != std::string::npos;
}

RuleFilter::RuleFilter(const std::vector<RuleRef>& rules)
    : m_rules(rules.size())
{
    // Folding the paths of many rules takes as long as all the rest, so a second core does it meanwhile.
    constexpr std::size_t manyRules = 50000;
    const auto policy
        = rules.size() > manyRules ? std::launch::async | std::launch::deferred : std::launch::deferred;
    const auto foldPaths = [this, &rules] {
        constexpr std::size_t roomForPath = 64; // bytes; memory that stays untouched costs nothing
        m_paths.reserve(rules.size(), rules.size() * roomForPath);
        for (const RuleRef& rule : rules)
            askRule(rule, [this](const auto& record) { m_paths.append(record.fields().path.view()); });
    };
    std::future<void> paths = std::async(policy, foldPaths);
    for (const RuleRef& rule : rules) {
        askRule(
            rule, [this](const auto& record) { m_processNames.append(record.fields().processName.view()); });
        const PolicyRule* policyRule = policyRuleIn(rule);
        m_tags.append(policyRule == nullptr ? std::string_view() : policyRule->fields().tag.view());
    }
    paths.get();
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
