#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/FoldedColumn.h"
#include "rules/RuleRef.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// True when a policy rule contains `text`, which must not be empty, as RuleFilter finds it.
bool policyRuleContains(const PolicyRule& rule, std::string_view text);

// Finds the rules that contain a text in path, process name or, for policy rules only, tag;
// case-insensitively, by the rules of the locale. Deliberate: a watch rule's tag is not searched.
//
// Keeps the folded texts by rule number, as the rules were when they were added. For the thread that owns the
// store; throws std::bad_alloc.
class RuleFilter {
public:
    // Adds the rules of `rules` that are not known yet.
    void follow(const AppendOnlyTable<RuleRef>& rules);

    // Sets the mark of every known rule from number `first` on that contains `text`, which must not be empty.
    void markContaining(std::string_view text, std::size_t first, std::vector<bool>& marks) const;

private:
    FoldedColumn m_paths;
    FoldedColumn m_processNames;
    FoldedColumn m_tags;
    std::size_t m_rules = 0;
};

} // namespace quorvane::rules
