#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleRef.h"
#include "rules/RuleValue.h"
#include "rules/RulesSnapshot.h"

#include <cstddef>
#include <cstdint>
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

// Rules that do not read back unchanged, as they are counted while a file's content is made.
struct UnwritableRules {
    static constexpr std::size_t mostKept = 100;

    std::uint64_t cut = 0; // whole lines would keep them
    std::uint64_t others = 0;
    std::vector<rules::RuleValue> first{}; // of both, as many as are kept

    std::uint64_t count() const { return cut + others; }
    void add(const rules::RuleValue& rule);
};

// How to enable that, as the end of a sentence.
std::string wholeLinesAdvice();

// Why the user's file, whose contents are `fileText`, must not be rewritten with cut lines: one of `rules`,
// which a change leaves alone, is complete in the file and would be cut. None when there is no such rule.
std::optional<std::string> whyRewritingCuts(
    const std::vector<rules::RuleRef>& rules, std::string_view fileText, rules::LineEnds lineEnds);
// The same for all rules that are to be written, where lines are cut: a rule with other marks is one that the
// change affects.
std::optional<std::string> whyRewritingCuts(const rules::RulesSnapshot& rules, std::string_view fileText);
// Why one of the rules does not read back from `content`, made of them with cut lines, although its own line
// is not cut; none when all of these do.
std::optional<std::string> whyLost(const rules::RulesSnapshot& rules, std::string_view content);

} // namespace quorvane::workflow
