#pragma once

#include "rules/FileMerge.h"
#include "rules/RulesDiff.h"
#include "rules/RulesMerge.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Differences and merges of rules in words, for the command line, the history and notices. Texts of rules are
// inserted verbatim, control characters included. Pure.

namespace quorvane::workflow {

// The rule as a line of a rules file, without the line feed.
std::string ruleText(const rules::RuleValue& rule);

// The changes between two values of a rule, property by property: "operations changed from r to rw, tag set
// to "b""; empty when nothing did. The values are of one kind.
std::string changeText(const rules::RuleValue& before, const rules::RuleValue& after);

// One line per rule, each beginning with "added", "removed" or "changed", in this order.
std::vector<std::string> differenceTexts(const rules::RulesDifference& difference);

// The rows of rules before a change.
class RowsOfRules {
public:
    void add(const rules::RuleValue& rule, std::size_t row);
    // "row 3: "; empty for a value that was not added.
    std::string prefixOf(const rules::RuleValue& rule) const;

private:
    std::unordered_map<const void*, std::size_t>
        m_rows; // by address of the value, which the caller keeps alive
};
// The same, prefixed with the rows of removed and changed rules.
std::vector<std::string> differenceTexts(const rules::RulesDifference& difference, const RowsOfRules& rows);

// "2 rules added, 1 removed, 1 changed", without zero counts; "no rule changed" when nothing differs.
std::string changeSummary(std::size_t added, std::size_t removed, std::size_t changed);
std::string differenceSummary(const rules::RulesDifference& difference);
// The same for any kind of item, by its singular name: "rule", "key".
std::string countsText(std::string_view noun, std::size_t added, std::size_t removed, std::size_t changed);

// Seconds since 1970 as a time in UTC: "2026-11-21 09:30:00 UTC"; "none" for 0, and the signed number when it
// is out of the calendar's range.
std::string timeText(std::uint64_t seconds);

// What a merge decided, and for which rule or text.
std::string reportText(const rules::MergeReport& report);
std::string conflictText(const rules::FileConflict& conflict);

} // namespace quorvane::workflow
