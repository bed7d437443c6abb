#include "rules/RuleIndex.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace quorvane::rules {

namespace {

// From this share of all rules on (an eighth), sorting everything again is faster than inserting rules one by
// one; below it, sorting some is faster than sorting all.
constexpr std::size_t largeShare = 8;

} // namespace

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

RuleIndex::RuleIndex()
{
    rebuild({});
}

void RuleIndex::setSearchText(std::optional<std::string> text)
{
    m_searchText = text && text->empty() ? std::nullopt : std::move(text);
}

void RuleIndex::setView(const RuleIndex& other)
{
    m_searchText = other.m_searchText;
    m_sortDescriptors = other.m_sortDescriptors;
    m_sorted.reset();
}

void RuleIndex::forgetNumbers()
{
    m_known = 0;
    m_stored = std::make_shared<const RuleOrder>();
    m_sorted.reset();
    m_isSystem.clear();
    m_anySystem = false;
    m_filter.reset();
    m_marks.clear();
    m_markedText.reset();
    m_tiesAreStored = false;
}

void RuleIndex::rebuild(RuleOrder stored)
{
    m_stored = std::make_shared<const RuleOrder>(std::move(stored));
    try {
        bringSortedUpToDate();
        if (m_searchText)
            markPassing();
        m_known = m_numbers.rules().size();
        m_numbers.settle();
        publish(passingInOrder());
        m_tiesAreStored = true;
    } catch (...) {
        m_numbers.lose();
        throw;
    }
}

void RuleIndex::sort(std::vector<SortDescriptor> descriptors)
{
    const bool followsRules = m_known == m_numbers.rules().size() && m_stored->size() == m_numbers.stored();
    const bool keeps = followsRules && keepsTies(descriptors);
    if (descriptors != m_sortDescriptors)
        m_sorted.reset();
    m_sortDescriptors = std::move(descriptors);
    if (keeps)
        return publish(passingInOrder());
    RuleOrder order = *m_rows->m_all;
    sortRules(order, m_rows->m_rules, m_sortDescriptors);
    publish(std::make_shared<const RuleOrder>(std::move(order)));
    m_tiesAreStored = false;
}

// True when rows that tie in `descriptors` also tied in the previous ones, and so are in stored order.
bool RuleIndex::keepsTies(const std::vector<SortDescriptor>& descriptors) const
{
    const auto isKeyOf = [&](const SortDescriptor& former) {
        return std::any_of(descriptors.begin(), descriptors.end(),
            [&](const SortDescriptor& descriptor) { return descriptor.key == former.key; });
    };
    return m_tiesAreStored && std::all_of(m_sortDescriptors.begin(), m_sortDescriptors.end(), isKeyOf);
}

std::vector<PolicyRulePtr> RuleIndex::passingPolicyRules() const
{
    std::vector<PolicyRulePtr> policies;
    for (const std::uint32_t number : *m_stored) {
        const auto* policy = std::get_if<PolicyRulePtr>(&m_numbers.rules()[number]);
        if (policy != nullptr && isPassing(number))
            policies.push_back(*policy);
    }
    return policies;
}

bool RuleIndex::passes(const PolicyRule& rule) const
{
    return !m_searchText || policyRuleContains(rule, *m_searchText);
}

void RuleIndex::markSystemRules()
{
    const auto& rules = m_numbers.rules();
    for (std::size_t number = m_isSystem.size(); number < rules.size(); ++number) {
        m_isSystem.push_back(visitRule(rules[number], [](const auto& rule) { return rule.fields().system; }));
        m_anySystem = m_anySystem || m_isSystem.back();
    }
}

void RuleIndex::markPassing()
{
    const auto& rules = m_numbers.rules();
    std::size_t first = m_marks.size();
    if (m_markedText != m_searchText) {
        m_markedText.reset();
        m_marks.clear();
        first = 0;
    }
    if (!m_filter)
        m_filter = std::make_unique<RuleFilter>();
    try {
        m_filter->follow(rules);
    } catch (...) {
        m_filter.reset();
        throw;
    }
    m_marks.resize(rules.size(), false);
    m_filter->markContaining(*m_searchText, first, m_marks);
    m_markedText = m_searchText;
}

// Removed rules are dropped from the sorted order, new ones are inserted by binary search.
void RuleIndex::bringSortedUpToDate()
{
    if (m_sortDescriptors.empty())
        m_sorted.reset();
    if (!m_sorted)
        return;
    RuleOrder added;
    for (std::size_t number = m_known; number < m_numbers.rules().size(); ++number) {
        if (m_numbers.isStored(static_cast<std::uint32_t>(number)))
            added.push_back(static_cast<std::uint32_t>(number));
    }
    const auto former = std::exchange(m_sorted, nullptr);
    if (added.size() > m_stored->size() / largeShare)
        return;
    RuleOrder order;
    order.reserve(m_stored->size());
    std::copy_if(former->begin(), former->end(), std::back_inserter(order),
        [this](std::uint32_t number) { return m_numbers.isStored(number); });
    if (!added.empty())
        insertSorted(order, std::move(added));
    m_sorted = std::make_shared<const RuleOrder>(std::move(order));
}

void RuleIndex::insertSorted(RuleOrder& order, RuleOrder added) const
{
    std::vector<std::uint32_t> rank; // by number: the position in stored order; built at the first tie
    const auto rankOf = [&](std::uint32_t number) {
        if (rank.empty()) {
            rank.resize(m_numbers.rules().size());
            for (std::size_t place = 0; place < m_stored->size(); ++place)
                rank[(*m_stored)[place]] = static_cast<std::uint32_t>(place);
        }
        return rank[number];
    };
    const auto& rules = m_numbers.rules();
    const auto standsBefore = [&](std::uint32_t a, std::uint32_t b) {
        const int compared = compareRules(rules[a], rules[b], m_sortDescriptors);
        return compared != 0 ? compared < 0 : rankOf(a) < rankOf(b);
    };
    std::sort(added.begin(), added.end(), standsBefore);
    // From the back, so that each rule moves at most once.
    auto rest = static_cast<std::ptrdiff_t>(order.size());
    order.resize(order.size() + added.size());
    auto to = order.end();
    for (auto number = added.rbegin(); number != added.rend(); ++number) {
        const auto place
            = std::upper_bound(order.begin(), order.begin() + rest, *number, standsBefore) - order.begin();
        to = std::move_backward(order.begin() + place, order.begin() + rest, to);
        *--to = *number;
        rest = place;
    }
}

void RuleIndex::sortAll()
{
    RuleOrder order = *m_stored;
    sortRules(order, m_numbers.rules(), m_sortDescriptors);
    m_sorted = std::make_shared<const RuleOrder>(std::move(order));
}

// The rules that pass the filter, sorted, ties in stored order.
std::shared_ptr<const RuleOrder> RuleIndex::passingInOrder()
{
    const auto passing = [this](const RuleOrder& order) {
        RuleOrder rules;
        std::copy_if(order.begin(), order.end(), std::back_inserter(rules),
            [this](std::uint32_t number) { return isPassing(number); });
        return rules;
    };
    const bool isSorted = !m_sortDescriptors.empty();
    if (m_searchText && isSorted && !m_sorted) {
        RuleOrder some = passing(*m_stored);
        if (some.size() < m_stored->size() / largeShare) {
            sortRules(some, m_numbers.rules(), m_sortDescriptors);
            return std::make_shared<const RuleOrder>(std::move(some));
        }
    }
    if (isSorted && !m_sorted)
        sortAll();
    const auto& order = isSorted ? m_sorted : m_stored;
    return m_searchText ? std::make_shared<const RuleOrder>(passing(*order)) : order;
}

std::shared_ptr<const RuleOrder> RuleIndex::withoutSystemRules(std::shared_ptr<const RuleOrder> order)
{
    markSystemRules();
    if (!m_anySystem)
        return order;
    auto userOnly = std::make_shared<RuleOrder>();
    userOnly->reserve(order->size());
    std::copy_if(order->begin(), order->end(), std::back_inserter(*userOnly),
        [this](std::uint32_t number) { return !m_isSystem[number]; });
    return userOnly;
}

std::shared_ptr<const RuleRows> RuleIndex::rowsOf(std::shared_ptr<const RuleOrder> order)
{
    auto rows = std::make_shared<RuleRows>();
    rows->m_rules = m_numbers.rules();
    rows->m_userOnly = withoutSystemRules(order);
    rows->m_all = std::move(order);
    return rows;
}

void RuleIndex::publish(std::shared_ptr<const RuleOrder> order)
{
    m_rows = rowsOf(std::move(order));
}

} // namespace quorvane::rules
