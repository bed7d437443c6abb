#include "rules/RuleSort.h"

#include "rules/Prefetch.h"
#include "rules/SortColumn.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

namespace quorvane::rules {

namespace {

constexpr std::array<std::pair<std::string_view, SortKey>, 11> propertyNames{{
    {"policyClass", SortKey::policyClass},
    {"policyType", SortKey::policyType},
    {"path", SortKey::path},
    {"processName", SortKey::processName},
    {"tag", SortKey::tag},
    {"constraint", SortKey::constraint},
    {"operations", SortKey::operations},
    {"flags", SortKey::flags},
    {"created", SortKey::created},
    {"sequence", SortKey::sequence},
    {"system", SortKey::system},
}};

template <class Rule> constexpr bool isPolicy = std::is_same_v<Rule, PolicyRule>;

template <class Rule, class Fields>
void appendValue(SortColumn& column, SortKey key, const Rule& rule, const Fields& fields)
{
    switch (key) {
    case SortKey::policyClass:
        return column.appendNumber(rule.policyClass());
    case SortKey::policyType:
        return column.appendNumber(fields.policyType);
    case SortKey::path:
        return column.appendText(fields.path);
    case SortKey::processName:
        return column.appendText(fields.processName);
    case SortKey::tag:
        return column.appendText(fields.tag);
    case SortKey::constraint:
        if constexpr (isPolicy<Rule>)
            return column.appendText(fields.constraint);
        return column.appendAbsent();
    case SortKey::operations:
        return column.appendNumber(fields.operations);
    case SortKey::flags:
        return column.appendNumber(fields.flags);
    case SortKey::created:
        if constexpr (isPolicy<Rule>)
            return column.appendUnsigned(fields.created);
        return column.appendAbsent();
    case SortKey::sequence:
        return column.appendNumber(fields.sequence);
    case SortKey::system:
        return column.appendNumber(fields.system ? 1 : 0);
    case SortKey::processShortName:
        return column.appendText(rule.getProcessShortName());
    case SortKey::ruleState:
        return column.appendNumber(rule.getRuleState());
    case SortKey::shownClass:
        if constexpr (isPolicy<Rule>)
            return column.appendNumber(fields.policyClass);
        else
            return column.appendNumber(rule.getPolicyClass());
    }
}

void append(SortColumn& column, SortKey key, const RuleRef& rule, const RuleValue& value)
{
    if (const auto* policy = std::get_if<PolicyValue>(&value))
        appendValue(column, key, *std::get<PolicyRulePtr>(rule), **policy);
    else
        appendValue(column, key, *std::get<WatchRulePtr>(rule), *std::get<WatchValue>(value));
}

// Each step for a block of rules before the next step, so that the waits for memory overlap. A record may be
// changed on another thread: its properties are those of one moment.
SortColumn columnOf(
    SortKey key, const std::vector<std::uint32_t>& order, const AppendOnlyTable<RuleRef>& rules)
{
    constexpr std::size_t blockSize = 64;
    SortColumn column(order.size());
    std::vector<RuleValue> values;
    for (std::size_t begin = 0; begin < order.size(); begin += blockSize) {
        const auto block = std::span(order).subspan(begin, std::min(blockSize, order.size() - begin));
        for (const std::uint32_t number : block)
            prefetchObject(rules[number]);
        for (const std::uint32_t number : block)
            visitRule(rules[number], [](const auto& rule) { prefetchObject(rule); });
        values.clear();
        for (const std::uint32_t number : block)
            askValue(values.emplace_back(valueOf(rules[number])),
                [](const auto& fields) { prefetchObject(fields); });
        for (const RuleValue& value : values)
            askValue(value, [](const auto& fields) { prefetchPath(fields); });
        for (std::size_t place = 0; place < block.size(); ++place)
            append(column, key, rules[block[place]], values[place]);
    }
    return column;
}

// A range of positions that tie in all descriptors before `descriptor`, and in the first `depth` bytes of it.
struct Tie {
    std::size_t begin;
    std::size_t end;
    std::size_t descriptor;
    std::size_t depth;
};

} // namespace

std::optional<SortKey> sortKeyNamed(std::string_view property)
{
    const auto* found = std::find_if(propertyNames.begin(), propertyNames.end(),
        [&](const auto& entry) { return entry.first == property; });
    return found == propertyNames.end() ? std::nullopt : std::optional(found->second);
}

// A multikey sort, eight bytes of a key at a time: positions that tie in them form a shorter range that is
// sorted by the next eight, and by the next descriptor when the key is exhausted. So long common prefixes are
// compared once. Sorting whole folded keys takes twice as long.
bool sortRules(std::vector<std::uint32_t>& order, const AppendOnlyTable<RuleRef>& rules,
    const std::vector<SortDescriptor>& descriptors, const std::stop_token& stop)
{
    if (descriptors.empty())
        return true;
    std::vector<std::unique_ptr<SortColumn>> columns(descriptors.size());
    std::vector<SortColumn::Slice> slices(order.size());
    for (std::size_t place = 0; place < slices.size(); ++place)
        slices[place].place = static_cast<std::uint32_t>(place);

    std::vector<Tie> ties{{0, order.size(), 0, 0}};
    while (!ties.empty()) {
        if (stop.stop_requested())
            return false;
        const Tie tie = ties.back();
        ties.pop_back();
        if (tie.descriptor == descriptors.size())
            continue;
        const SortDescriptor& descriptor = descriptors[tie.descriptor];
        auto& column = columns[tie.descriptor];
        if (!column)
            column = std::make_unique<SortColumn>(columnOf(descriptor.key, order, rules));

        const auto begin = slices.begin() + static_cast<std::ptrdiff_t>(tie.begin);
        const auto end = slices.begin() + static_cast<std::ptrdiff_t>(tie.end);
        column->loadSlices(begin, end, tie.depth, descriptor.ascending);
        for (auto from = begin; from != end;) {
            const auto to = std::find_if_not(from, end, [&](const auto& slice) { return slice.ties(*from); });
            const auto first = static_cast<std::size_t>(from - slices.begin());
            const auto last = static_cast<std::size_t>(to - slices.begin());
            from = to;
            if (last - first < 2)
                continue;
            if (slices[first].keyGoesOn(descriptor.ascending))
                ties.push_back({first, last, tie.descriptor, tie.depth + SortColumn::sliceLength});
            else
                ties.push_back({first, last, tie.descriptor + 1, 0});
        }
    }

    std::vector<std::uint32_t> sorted(order.size());
    std::transform(
        slices.begin(), slices.end(), sorted.begin(), [&](const auto& slice) { return order[slice.place]; });
    order = std::move(sorted);
    return true;
}

int compareRules(const RuleRef& a, const RuleRef& b, const std::vector<SortDescriptor>& descriptors)
{
    for (const SortDescriptor& descriptor : descriptors) {
        SortColumn column(2);
        for (const RuleRef* rule : {&a, &b})
            append(column, descriptor.key, *rule, valueOf(*rule));
        if (const int order = column.compareFirstTwo(); order != 0)
            return descriptor.ascending ? order : -order;
    }
    return 0;
}

} // namespace quorvane::rules
