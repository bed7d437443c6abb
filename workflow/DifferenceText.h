#pragma once

#include "rules/FileMerge.h"
#include "rules/RulesDiff.h"
#include "rules/RulesMerge.h"

#include <string>
#include <vector>

// Differences and merges of rules in words, for the command line, the history and notices. Texts of rules
// stand in them as they are, control characters included.

namespace quorvane {

// The rule as a line of a rules file, without the line feed.
std::string ruleText(const RuleValue& rule);

// What changed of a rule between two values of it: "tag changed from "a" to "b"", "tag set to "b"", "tag "a"
// removed", "creation time changed from … to …", or both; empty when tag and creation time are the same.
std::string changeText(const RuleValue& before, const RuleValue& after);

// One line a rule, each beginning with "added", "removed" or "changed", in this order.
std::vector<std::string> differenceTexts(const RulesDifference& difference);

// "2 rules added, 1 removed, 1 changed", without what is none; "no rule changed" when nothing differs.
std::string differenceSummary(const RulesDifference& difference);

// What a merge has decided, and for which rule or text.
std::string reportText(const MergeReport& report);
std::string conflictText(const FileConflict& conflict);

} // namespace quorvane
