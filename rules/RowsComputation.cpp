#include "rules/RowsComputation.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorvane::rules {

namespace {

// From this share of all rules on (an eighth), sorting everything again is faster than inserting rules one by
// one; below it, sorting some is faster than sorting all.
constexpr std::size_t largeShare = 8;

// So many are inserted into a million sorted ones in some 20 ms.
constexpr std::size_t fewRules = 2000;

} // namespace

void RowsComputation::setRules(const RowNumbers& numbers, std::shared_ptr<const RuleOrder> stored)
{
    markSystemRules(numbers.rules());
    m_rules = numbers.rules();
    m_isStored = numbers.storedMarks();
    m_stored = std::move(stored);
}

void RowsComputation::setSearchText(std::optional<std::string> text)
{
    m_searchText = text && text->empty() ? std::nullopt : std::move(text);
}

void RowsComputation::setSortDescriptors(std::vector<SortDescriptor> descriptors)
{
    if (descriptors != m_sortDescriptors)
        m_sorted.reset();
    m_sortDescriptors = std::move(descriptors);
}

void RowsComputation::forgetNumbers()
{
    RowsComputation fresh;
    fresh.m_sortDescriptors = std::move(m_sortDescriptors);
    fresh.m_searchText = std::move(m_searchText);
    fresh.m_rows = std::move(m_rows);
    *this = std::move(fresh);
}

bool RowsComputation::run(const std::stop_token& stop)
{
    bringSortedUpToDate();
    if (m_searchText && !markPassing(stop))
        return false;
    auto order = passingInOrder(stop);
    if (!order)
        return false;
    m_known = m_rules.size();
    m_rows = rowsOf(std::move(order));
    m_tiesAreStored = true;
    return true;
}

void RowsComputation::sortAgain(std::vector<SortDescriptor> descriptors)
{
    setSortDescriptors(std::move(descriptors));
    RuleOrder order = *m_rows->m_all;
    sortRules(order, m_rules, m_sortDescriptors);
    m_rows = rowsOf(std::make_shared<const RuleOrder>(std::move(order)));
    m_tiesAreStored = false;
}

bool RowsComputation::hasRules(const RowNumbers& numbers) const
{
    return isOf(numbers) && m_rules.size() == numbers.rules().size() && m_isStored == numbers.storedMarks();
}

bool RowsComputation::takesLong(const RowNumbers& numbers) const
{
    const bool isSorted = !m_sortDescriptors.empty();
    const std::size_t added = numbers.rules().size() - m_known;
    if ((isSorted || m_searchText) && added > std::min(fewRules, numbers.stored() / largeShare))
        return true;
    return (isSorted && !m_sorted) || (m_searchText && m_markedText != m_searchText);
}

std::vector<PolicyRulePtr> RowsComputation::passingPolicyRules() const
{
    std::vector<PolicyRulePtr> policies;
    for (const std::uint32_t number : *m_stored) {
        const auto* policy = std::get_if<PolicyRulePtr>(&m_rules[number]);
        if (policy != nullptr && isPassing(number))
            policies.push_back(*policy);
    }
    return policies;
}

void RowsComputation::markSystemRules(const AppendOnlyTable<RuleRef>& rules)
{
    m_isSystem.reserve(rules.size());
    for (std::size_t number = m_isSystem.size(); number < rules.size(); ++number) {
        m_isSystem.push_back(visitRule(rules[number], [](const auto& rule) { return rule.fields().system; }));
        m_anySystem = m_anySystem || m_isSystem.back();
    }
}

// False when stopped.
bool RowsComputation::markPassing(const std::stop_token& stop)
{
    std::size_t first = m_marks.size();
    if (m_markedText != m_searchText) {
        m_markedText.reset();
        m_marks.clear();
        first = 0;
    }
    m_marks.resize(m_rules.size(), false);
    if (!m_filter->markContaining(*m_searchText, m_rules, first, m_marks, stop))
        return false;
    m_markedText = m_searchText;
    return true;
}

// Removed rules are dropped from the sorted order, new ones are inserted by binary search.
void RowsComputation::bringSortedUpToDate()
{
    if (m_sortDescriptors.empty())
        m_sorted.reset();
    if (!m_sorted)
        return;
    RuleOrder added;
    for (std::size_t number = m_known; number < m_rules.size(); ++number) {
        if (m_isStored[number])
            added.push_back(static_cast<std::uint32_t>(number));
    }
    const auto former = std::exchange(m_sorted, nullptr);
    if (added.size() > m_stored->size() / largeShare)
        return;
    RuleOrder order;
    order.reserve(m_stored->size());
    std::copy_if(former->begin(), former->end(), std::back_inserter(order),
        [this](std::uint32_t number) { return m_isStored[number]; });
    if (!added.empty())
        insertSorted(order, std::move(added));
    m_sorted = std::make_shared<const RuleOrder>(std::move(order));
}

void RowsComputation::insertSorted(RuleOrder& order, RuleOrder added) const
{
    std::vector<std::uint32_t> rank; // by number: the position in stored order; built at the first tie
    const auto rankOf = [&](std::uint32_t number) {
        if (rank.empty()) {
            rank.resize(m_rules.size());
            for (std::size_t place = 0; place < m_stored->size(); ++place)
                rank[(*m_stored)[place]] = static_cast<std::uint32_t>(place);
        }
        return rank[number];
    };
    const auto standsBefore = [&](std::uint32_t a, std::uint32_t b) {
        const int compared = compareRules(m_rules[a], m_rules[b], m_sortDescriptors);
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

// The rules that pass the filter, sorted, ties in stored order. Null when stopped.
std::shared_ptr<const RuleOrder> RowsComputation::passingInOrder(const std::stop_token& stop)
{
    const auto passing = [this](const RuleOrder& order) {
        auto rules = std::make_shared<RuleOrder>();
        std::copy_if(order.begin(), order.end(), std::back_inserter(*rules),
            [this](std::uint32_t number) { return isPassing(number); });
        return rules;
    };
    const bool isSorted = !m_sortDescriptors.empty();
    if (m_searchText && isSorted && !m_sorted) {
        const auto some = passing(*m_stored);
        if (some->size() < m_stored->size() / largeShare)
            return sortRules(*some, m_rules, m_sortDescriptors, stop) ? some : nullptr;
    }
    if (isSorted && !m_sorted) {
        RuleOrder all = *m_stored;
        if (!sortRules(all, m_rules, m_sortDescriptors, stop))
            return nullptr;
        m_sorted = std::make_shared<const RuleOrder>(std::move(all));
    }
    const auto& order = isSorted ? m_sorted : m_stored;
    return m_searchText ? passing(*order) : order;
}

std::shared_ptr<const RuleOrder> RowsComputation::withoutSystemRules(
    std::shared_ptr<const RuleOrder> order) const
{
    if (!m_anySystem)
        return order;
    auto userOnly = std::make_shared<RuleOrder>();
    userOnly->reserve(order->size());
    std::copy_if(order->begin(), order->end(), std::back_inserter(*userOnly),
        [this](std::uint32_t number) { return !m_isSystem[number]; });
    return userOnly;
}

std::shared_ptr<const RuleRows> RowsComputation::rowsOf(std::shared_ptr<const RuleOrder> order) const
{
    auto rows = std::make_shared<RuleRows>();
    rows->m_rules = m_rules;
    rows->m_userOnly = withoutSystemRules(order);
    rows->m_all = std::move(order);
    return rows;
}

} // namespace quorvane::rules
