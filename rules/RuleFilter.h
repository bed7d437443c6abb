#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/FoldedColumn.h"
#include "rules/RuleRef.h"

#include <cstddef>
#include <mutex>
#include <stop_token>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// True when a policy rule contains `text`, which must not be empty, as RuleFilter finds it.
bool policyRuleContains(const PolicyRule& rule, std::string_view text);

// Finds the rules that contain a text in path, process name or, for policy rules only, tag;
// case-insensitively, by the rules of the locale. Deliberate: a watch rule's tag is not searched.
//
// Keeps the folded texts by rule number, as the rules were when they were added. Any thread, one after the
// other; throws std::bad_alloc.
class RuleFilter {
public:
    // Sets the mark of every rule of `rules` from number `first` on that contains `text`, which must not be
    // empty. Each call must be for the same table, or an earlier or later state of it. False when it was
    // stopped; then only some marks are set.
    bool markContaining(std::string_view text, const AppendOnlyTable<RuleRef>& rules, std::size_t first,
        std::vector<bool>& marks, const std::stop_token& stop);

private:
    bool follow(const AppendOnlyTable<RuleRef>& rules, const std::stop_token& stop);
    void addSome(const AppendOnlyTable<RuleRef>& rules);

    std::mutex m_mutex; // for everything below
    FoldedColumn m_paths;
    RepeatedColumn m_processNames;
    RepeatedColumn m_tags;
    std::size_t m_rules = 0;
};

} // namespace quorvane::rules
