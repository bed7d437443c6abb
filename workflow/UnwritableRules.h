#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleRef.h"
#include "rules/RuleValue.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Rules that a rules file would not hold as they are, for commands that refuse to write them.

namespace quorvane::workflow {

// Why the rule must not be written, in words; none when it comes back as it is. Of one that only its letters
// beyond ASCII keep from that, the words say how to switch on whole lines.
std::optional<std::string> whyUnwritable(const rules::RuleValue& rule, rules::LineEnds lineEnds);

// True when the rule comes back only from a file whose lines are written whole.
bool needsWholeLines(const rules::RuleValue& rule);

// How to switch them on, in words that end a sentence.
std::string wholeLinesAdvice();

// Why the user's file, which holds `fileText` now, must not be written anew with cut lines: a rule of
// `rules`, which are those that a change leaves alone, stands there whole and would lose its end. None when
// none does.
std::optional<std::string> whyRewritingCuts(
    const std::vector<rules::RuleRef>& rules, std::string_view fileText, rules::LineEnds lineEnds);

} // namespace quorvane::workflow
