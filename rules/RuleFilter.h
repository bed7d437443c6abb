#pragma once

#include "rules/FoldedColumn.h"
#include "rules/RuleRef.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvane {

// True when a policy rule contains `text`, which must not be empty, as RuleFilter finds it.
bool policyRuleContains(const PolicyRule& rule, std::string_view text);

// Finds the rules that contain a text: case-insensitively, by the rules of the locale, in path, process name
// or, for policy rules only, tag. Deliberate: a watch rule's tag is not searched.
//
// Keeps the folded texts of the rules it was made from; a change of a rule afterwards is not seen.
class RuleFilter {
public:
    explicit RuleFilter(const std::vector<RuleRef>& rules);

    // The numbers, in order, of the rules that contain `text`, which must not be empty.
    std::vector<std::uint32_t> rulesContaining(std::string_view text) const;

private:
    FoldedColumn m_paths;
    FoldedColumn m_processNames;
    FoldedColumn m_tags;
    std::size_t m_rules;
};

} // namespace quorvane
