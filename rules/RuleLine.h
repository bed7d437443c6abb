#pragma once

#include "rules/FilterOption.h"
#include "rules/PolicyRule.h"
#include "rules/TextPool.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A line of a rules file to and from a record. The tokens of a line, by position:
//
//   watch rule:  "watch" type path process operations [tag or flags]
//   policy rule: class type path process operations [tag or flags] [constraint] [created]
//   option:      "set" name value
//
// The sixth token is the tag in a user's file and flag letters in a system file; what the line lacks is empty
// or 0. Tokens beyond these are ignored.

namespace quorvane::rules {

// More tokens say nothing.
constexpr std::size_t mostTokensOfALine = 8;

enum class LineKind { unusable, watchRule, option, policyRule };

// What a line with these tokens is. Where options are not allowed a long enough "set" line is a policy rule
// of unknown class; this is deliberate.
LineKind kindOfLine(const std::vector<std::string_view>& tokens, bool optionsAllowed);

// The record of a line of that kind. `sequence` is left 0.
WatchRuleFields watchRuleFromTokens(const std::vector<std::string_view>& tokens, bool system, TextPool& pool);
PolicyRuleFields policyRuleFromTokens(
    const std::vector<std::string_view>& tokens, bool system, TextPool& pool);
FilterOption optionFromTokens(const std::vector<std::string_view>& tokens);

// How much of a line reaches a rules file.
enum class LineEnds {
    cut, // as writtenPart() says, which is the format's way
    whole,
};

// The line as it is put together for writing, its line feed included.
std::string ruleLine(const WatchRuleFields& rule);
std::string ruleLine(const PolicyRuleFields& rule);
// The same, at the end of `out`.
void appendRuleLine(std::string& out, const WatchRuleFields& rule);
void appendRuleLine(std::string& out, const PolicyRuleFields& rule);

// The part of `line` that reaches the file. Deliberate: a line's length is counted in UTF-16 units but
// written in bytes, so a line with other than ASCII text loses its end.
std::string_view writtenPart(std::string_view line);

// True when the rule, written so and read as a line of a user's file, comes back the same (flags aside, and
// the tag without its double quotes). Text beyond ASCII whose line is cut, a double quote, a trailing blank
// or no operations at all fail.
bool readsBackAsWritten(const WatchRuleFields& rule, LineEnds lineEnds = LineEnds::cut);
bool readsBackAsWritten(const PolicyRuleFields& rule, LineEnds lineEnds = LineEnds::cut);

} // namespace quorvane::rules
