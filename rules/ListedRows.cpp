#include "rules/ListedRows.h"

#include "rules/RowsComputation.h"

#include <utility>

namespace quorvane::rules {

std::shared_ptr<const RuleRows> listedRows(const std::vector<RuleRef>& rules)
{
    RowNumbers numbers;
    auto order = std::make_shared<RuleOrder>();
    order->reserve(rules.size());
    for (const RuleRef& rule : rules)
        order->push_back(numbers.add(rule));
    RowsComputation computation;
    computation.setRules(numbers, std::move(order));
    return computation.storedRows();
}

} // namespace quorvane::rules
