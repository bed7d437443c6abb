#include "rules/RuleRows.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace quorvane::rules {

RuleRows::Common RuleRows::commonWith(const RuleRows& other, bool includeSystemRules) const
{
    const RuleOrder& ours = numbers(includeSystemRules);
    const RuleOrder& theirs = other.numbers(includeSystemRules);
    const auto lengths = [&](auto same) -> Common {
        const auto start = std::mismatch(ours.begin(), ours.end(), theirs.begin(), theirs.end(), same).first;
        const auto end
            = std::mismatch(ours.rbegin(), ours.rend(), theirs.rbegin(), theirs.rend(), same).first;
        return {
            static_cast<std::size_t>(start - ours.begin()), static_cast<std::size_t>(end - ours.rbegin())};
    };
    if (m_rules.sharesElementsWith(other.m_rules))
        return lengths(std::equal_to<>());
    return lengths([&](std::uint32_t a, std::uint32_t b) { return m_rules[a] == other.m_rules[b]; });
}

std::shared_ptr<const RuleRows> RuleRows::marked(const std::vector<bool>& marks) const
{
    const auto markedOf = [&marks](const RuleOrder& order) {
        auto rows = std::make_shared<RuleOrder>();
        std::copy_if(order.begin(), order.end(), std::back_inserter(*rows),
            [&marks](std::uint32_t number) { return marks[number]; });
        return rows;
    };
    auto rows = std::make_shared<RuleRows>();
    rows->m_rules = m_rules;
    rows->m_all = markedOf(*m_all);
    rows->m_userOnly = m_userOnly == m_all ? rows->m_all : markedOf(*m_userOnly);
    return rows;
}

} // namespace quorvane::rules
