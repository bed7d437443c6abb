#include "rules/RuleIndex.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace quorvane {

RuleIndex::RuleIndex()
{
    setRules({}, 0);
}

void RuleIndex::setRules(std::vector<RuleRef> rules, std::uint64_t changes)
{
    m_rules = std::make_shared<const std::vector<RuleRef>>(std::move(rules));
    m_filter.reset();
    rebuild(changes);
}

void RuleIndex::setSearchText(std::optional<std::string> text)
{
    m_searchText = text && text->empty() ? std::nullopt : std::move(text);
}

void RuleIndex::setSortDescriptors(std::vector<SortDescriptor> descriptors)
{
    m_sortDescriptors = std::move(descriptors);
}

void RuleIndex::rebuild(std::uint64_t changes)
{
    m_passing = passingRules(changes);
    std::vector<std::uint32_t> order = m_passing;
    sortRules(order, *m_rules, m_sortDescriptors);
    publish(std::move(order));
}

void RuleIndex::sort()
{
    std::vector<std::uint32_t> order = m_rows->m_all;
    sortRules(order, *m_rules, m_sortDescriptors);
    publish(std::move(order));
}

std::vector<PolicyRulePtr> RuleIndex::passingPolicyRules() const
{
    std::vector<PolicyRulePtr> policies;
    for (const std::uint32_t number : m_passing) {
        if (const auto* policy = std::get_if<PolicyRulePtr>(&(*m_rules)[number]))
            policies.push_back(*policy);
    }
    return policies;
}

bool RuleIndex::passes(const PolicyRule& rule) const
{
    return !m_searchText || policyRuleContains(rule, *m_searchText);
}

std::vector<std::uint32_t> RuleIndex::passingRules(std::uint64_t changes)
{
    if (!m_searchText) {
        std::vector<std::uint32_t> all(m_rules->size());
        std::iota(all.begin(), all.end(), 0U);
        return all;
    }
    if (!m_filter || m_changes != changes) {
        m_changes = changes;
        m_filter = std::make_unique<RuleFilter>(*m_rules);
    }
    return m_filter->rulesContaining(*m_searchText);
}

void RuleIndex::publish(std::vector<std::uint32_t> order)
{
    auto rows = std::make_shared<RuleRows>();
    rows->m_rules = m_rules;
    rows->m_userOnly.reserve(order.size());
    std::copy_if(
        order.begin(), order.end(), std::back_inserter(rows->m_userOnly), [this](std::uint32_t number) {
            return askRule((*m_rules)[number], [](const auto& rule) { return !rule.fields().system; });
        });
    rows->m_all = std::move(order);
    m_rows = std::move(rows);
}

} // namespace quorvane
