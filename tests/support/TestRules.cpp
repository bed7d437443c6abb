#include "tests/support/TestRules.h"

#include "rules/RuleLine.h"

namespace quorvane {

std::string rowsAsText(const RuleManager& store, bool includeSystemRules)
{
    std::string text;
    for (std::size_t row = 0; row < store.totalRules(includeSystemRules); ++row) {
        text += askRule(store.ruleAtIndex(row, includeSystemRules),
            [](const auto& rule) { return ruleLine(rule.fields()); });
    }
    return text;
}

} // namespace quorvane
