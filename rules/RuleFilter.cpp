#include "rules/RuleFilter.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <future>
#include <string>

namespace quorvane::rules {

bool policyRuleContains(const PolicyRule& rule, std::string_view text)
{
    const std::string key = platform::searchKey(text);
    const PolicyRuleFields& fields = rule.fields();
    return platform::searchKey(fields.path.view()).find(key) != std::string::npos
        || platform::searchKey(fields.processName.view()).find(key) != std::string::npos
        || platform::searchKey(fields.tag.view()).find(key) != std::string::npos;
}

bool RuleFilter::markContaining(std::string_view text, const AppendOnlyTable<RuleRef>& rules,
    std::size_t first, std::vector<bool>& marks, const std::stop_token& stop)
{
    const std::lock_guard lock(m_mutex);
    if (!follow(rules, stop))
        return false;
    const std::string key = platform::searchKey(text);
    const auto mark = [&](const auto& column) {
        if (stop.stop_requested())
            return false;
        column.markContaining(key, first, marks);
        return true;
    };
    return mark(m_paths) && mark(m_processNames) && mark(m_tags);
}

// Adds the rules that are not known yet. What is added stays when it is stopped.
bool RuleFilter::follow(const AppendOnlyTable<RuleRef>& rules, const std::stop_token& stop)
{
    try {
        while (m_rules < rules.size()) {
            if (stop.stop_requested())
                return false;
            addSome(rules);
        }
        return true;
    } catch (...) {
        m_paths = {};
        m_processNames = {};
        m_tags = {};
        m_rules = 0;
        throw;
    }
}

void RuleFilter::addSome(const AppendOnlyTable<RuleRef>& rules)
{
    constexpr std::size_t rulesAtOnce = 100'000; // takes some ten milliseconds
    constexpr std::size_t roomForPath = 64; // bytes; reserved memory that is never touched costs nothing
    // Folding the paths of many rules takes as long as all the rest, so a second thread does it in parallel.
    constexpr std::size_t manyRules = 50'000;
    const std::size_t end = std::min(rules.size(), m_rules + rulesAtOnce);
    if (m_rules == 0)
        m_paths.reserve(rules.size(), rules.size() * roomForPath);
    const auto policy
        = end - m_rules > manyRules ? std::launch::async | std::launch::deferred : std::launch::deferred;
    std::future<void> paths = std::async(policy, [this, &rules, end] {
        for (std::size_t number = m_rules; number < end; ++number)
            m_paths.append(
                askValue(valueOf(rules[number]), [](const auto& fields) { return fields.path; }).view());
    });
    for (std::size_t number = m_rules; number < end; ++number) {
        const RuleValue value = valueOf(rules[number]);
        m_processNames.append(askValue(value, [](const auto& fields) { return fields.processName; }));
        const auto* policyRule = std::get_if<PolicyValue>(&value);
        m_tags.append(policyRule == nullptr ? NullableText() : (*policyRule)->tag);
    }
    paths.get();
    m_rules = end;
}

} // namespace quorvane::rules
