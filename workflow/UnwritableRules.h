#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleRef.h"
#include "rules/RuleValue.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Rules that a rules file cannot represent, for commands that refuse to write them.

namespace quorvane::workflow {

// Why the rule must not be written, in words; none when it reads back unchanged. If only non-ASCII characters
// prevent that, the words say how to enable whole lines.
std::optional<std::string> whyUnwritable(const rules::RuleValue& rule, rules::LineEnds lineEnds);

// True when the rule reads back unchanged only if lines are written completely.
bool needsWholeLines(const rules::RuleValue& rule);

// How to enable that, as the end of a sentence.
std::string wholeLinesAdvice();

// Why the user's file, whose contents are `fileText`, must not be rewritten with cut lines: one of `rules`,
// which a change leaves alone, is complete in the file and would be cut. None when there is no such rule.
std::optional<std::string> whyRewritingCuts(
    const std::vector<rules::RuleRef>& rules, std::string_view fileText, rules::LineEnds lineEnds);

} // namespace quorvane::workflow
