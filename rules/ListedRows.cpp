#include "rules/ListedRows.h"

#include <utility>

namespace quorvane::rules {

std::shared_ptr<const RuleRows> listedRows(const std::vector<RuleRef>& rules)
{
    RuleIndex index;
    RuleOrder order;
    order.reserve(rules.size());
    for (const RuleRef& rule : rules)
        order.push_back(index.numbers().add(rule));
    index.rebuild(std::move(order));
    return index.rows();
}

} // namespace quorvane::rules
