#pragma once

#include "rules/FilterOption.h"
#include "rules/PolicyRule.h"
#include "rules/TextPool.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Converts a line of a rules file to and from a record. Pure functions. The tokens of a line, by position:
//
//   watch rule:  "watch" type path process operations [tag or flags]
//   policy rule: class type path process operations [tag or flags] [constraint] [created]
//   option:      "set" name value
//
// The sixth token is the tag in a user's file and flag letters in a system file; what is missing is empty or
// 0. Tokens beyond these are ignored.

namespace quorvane::rules {

// Further tokens are ignored.
constexpr std::size_t mostTokensOfALine = 8;

enum class LineKind { unusable, watchRule, option, policyRule };

// The kind of a line with these tokens. Where options are not allowed, a long enough "set" line is a policy
// rule of unknown class; this is deliberate.
LineKind kindOfLine(const std::vector<std::string_view>& tokens, bool optionsAllowed);

// The record of a line of that kind. `sequence` is left 0.
WatchRuleFields watchRuleFromTokens(const std::vector<std::string_view>& tokens, bool system, TextPool& pool);
PolicyRuleFields policyRuleFromTokens(
    const std::vector<std::string_view>& tokens, bool system, TextPool& pool);
FilterOption optionFromTokens(const std::vector<std::string_view>& tokens);

// How much of a line reaches a rules file.
enum class LineEnds {
    cut, // as writtenPart(): the format's behaviour
    whole,
};

// The complete line to be written, including its line feed.
std::string ruleLine(const WatchRuleFields& rule);
std::string ruleLine(const PolicyRuleFields& rule);
// The same, appended to `out`.
void appendRuleLine(std::string& out, const WatchRuleFields& rule);
void appendRuleLine(std::string& out, const PolicyRuleFields& rule);

// The part of `line` that reaches the file. Deliberate: a line's length is counted in UTF-16 units but
// written in bytes, so a line with non-ASCII text loses its end.
std::string_view writtenPart(std::string_view line);

// True when the rule, written this way and read back as a line of a user's file, is the same (except for
// flags, and the tag loses its double quotes). Fails for non-ASCII text in a cut line, a double quote, a
// trailing blank or no operations at all.
bool readsBackAsWritten(const WatchRuleFields& rule, LineEnds lineEnds = LineEnds::cut);
bool readsBackAsWritten(const PolicyRuleFields& rule, LineEnds lineEnds = LineEnds::cut);

} // namespace quorvane::rules
