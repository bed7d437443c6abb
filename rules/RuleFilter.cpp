#include "rules/RuleFilter.h"

#include "platform/Unicode.h"

#include <future>

namespace quorvane::rules {

bool policyRuleContains(const PolicyRule& rule, std::string_view text)
{
    const std::string key = platform::searchKey(text);
    const PolicyRuleFields& fields = rule.fields();
    return platform::searchKey(fields.path.view()).find(key) != std::string::npos
        || platform::searchKey(fields.processName.view()).find(key) != std::string::npos
        || platform::searchKey(fields.tag.view()).find(key) != std::string::npos;
}

void RuleFilter::follow(const AppendOnlyTable<RuleRef>& rules)
{
    // Folding the paths of many rules takes as long as all the rest, so a second thread does it in parallel.
    constexpr std::size_t manyRules = 50000;
    const std::size_t first = m_rules;
    const std::size_t added = rules.size() - first;
    const auto policy
        = added > manyRules ? std::launch::async | std::launch::deferred : std::launch::deferred;
    const auto foldPaths = [this, &rules, first, added] {
        constexpr std::size_t roomForPath = 64; // bytes; reserved memory that is never touched costs nothing
        if (first == 0)
            m_paths.reserve(added, added * roomForPath);
        for (std::size_t number = first; number < rules.size(); ++number)
            visitRule(rules[number], [this](const auto& record) { m_paths.append(record.fields().path); });
    };
    std::future<void> paths = std::async(policy, foldPaths);
    for (std::size_t number = first; number < rules.size(); ++number) {
        visitRule(rules[number],
            [this](const auto& record) { m_processNames.append(record.fields().processName); });
        const PolicyRule* policyRule = policyRuleIn(rules[number]);
        m_tags.append(policyRule == nullptr ? NullableText() : policyRule->fields().tag);
    }
    paths.get();
    m_rules = rules.size();
}

void RuleFilter::markContaining(std::string_view text, std::size_t first, std::vector<bool>& marks) const
{
    const std::string key = platform::searchKey(text);
    m_paths.markContaining(key, first, marks);
    m_processNames.markContaining(key, first, marks);
    m_tags.markContaining(key, first, marks);
}

} // namespace quorvane::rules
