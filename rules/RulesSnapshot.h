#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/Prefetch.h"
#include "rules/RuleValue.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

namespace quorvane::rules {

// Rules as they were at one moment, in the order in which they are written. Cheap to make and to copy,
// immutable, safe to use from any thread.
class RulesSnapshot {
public:
    RulesSnapshot() = default;
    // The rules are `values` at the indexes in `order`; the original of `values` may keep growing.
    RulesSnapshot(AppendOnlyTable<RuleValue> values, std::shared_ptr<const std::vector<std::uint32_t>> order)
        : m_values(std::move(values))
        , m_order(std::move(order))
    {
    }

    // These rules, in this order.
    explicit RulesSnapshot(const std::vector<RuleValue>& rules)
    {
        for (const RuleValue& rule : rules)
            m_values.append(rule);
        std::vector<std::uint32_t> order(rules.size());
        std::iota(order.begin(), order.end(), 0U);
        m_order = std::make_shared<const std::vector<std::uint32_t>>(std::move(order));
    }

    // The rules `read` from a file to which those of `meant` were written. Rules that read as they were meant
    // are the same values; only the others are held anew.
    static RulesSnapshot ofRead(const std::vector<RuleValue>& read, const RulesSnapshot& meant);

    std::size_t size() const { return m_order ? m_order->size() : 0; }

    template <class Use> void forEach(Use use) const
    {
        forEachPrefetched(
            size(), [&](std::size_t place) { use(at(place)); },
            [&](std::size_t place) { prefetchMemory(&at(place)); },
            [&](std::size_t place) {
                askValue(at(place), [](const auto& fields) { prefetchObject(fields); });
            },
            [&](std::size_t place) {
                askValue(at(place), [](const auto& fields) { prefetchPath(fields); });
            });
    }

    std::vector<RuleValue> values() const
    {
        std::vector<RuleValue> values;
        values.reserve(size());
        forEach([&values](const RuleValue& value) { values.push_back(value); });
        return values;
    }

private:
    const RuleValue& at(std::size_t place) const
    {
        const std::uint32_t index = (*m_order)[place];
        return index < m_values.size() ? m_values[index] : (*m_others)[index - m_values.size()];
    }

    AppendOnlyTable<RuleValue> m_values;
    std::shared_ptr<const std::vector<RuleValue>> m_others; // with the indexes behind; null for none
    std::shared_ptr<const std::vector<std::uint32_t>> m_order;
};

} // namespace quorvane::rules
