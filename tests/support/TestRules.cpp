#include "tests/support/TestRules.h"

#include "rules/RuleLine.h"

namespace quorvane::test {

std::string rowsAsText(const rules::RuleManager& store, bool includeSystemRules)
{
    std::string text;
    for (std::size_t row = 0; row < store.totalRules(includeSystemRules); ++row) {
        text += visitRule(store.ruleAtIndex(row, includeSystemRules),
            [](const auto& rule) { return ruleLine(rule.fields()); });
    }
    return text;
}

} // namespace quorvane::test
