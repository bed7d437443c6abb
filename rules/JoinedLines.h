#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Lines of a rules file that hold more than one rule.
//
// The format's writer cuts the end of a line with text beyond ASCII (RuleLine.h), its line feed first, and
// the next rule continues on that line; a full disk joins lines as well. What is left of each rule can be
// taken apart again. All functions are pure, take any bytes and need time in proportion to them.

namespace quorvane::rules {

// A rule out of a joined line, as far as its text is there.
struct JoinedRule {
    // As a line of a user's file reads. A further rule always has a known class and type; the first may have
    // unknown ones ("err"). A letter cut at the join and blanks before the cut are not part of the texts;
    // other bytes that are no UTF-8 are.
    RuleValue rule;
    // The properties whose text is cut or missing, by name: out of path, processName, tag, constraint,
    // operations, created, in this order. A lost closing quote counts as cut. Cut operations are those
    // letters that are left, a cut creation time is 0.
    std::vector<std::string_view> cut;
};

struct JoinedLine {
    std::size_t number; // from 1, as editors count: LF and CR LF end a line
    std::string_view text; // without its line end; points into the bytes given
    std::vector<JoinedRule> rules; // at least two
};

// The joined lines of a rules file, in order. A line is joined when behind the place where the fields of its
// rule end, or are cut, stands text that reads as a rule with known class and type and a quoted path.
// Comments never are; text inside the quotes of a whole field is no rule.
std::vector<JoinedLine> joinedLines(std::string_view bytes);

// True when `line`, whose line end is left out but was there, is joined.
bool isJoinedLine(std::string_view line);

// The file with every rule of its joined lines on a line of its own, and every other byte as it was. A rule
// that nothing is missing from keeps its bytes, a cut one is written whole, without what was cut. One whose
// operations are lost stays too short for a rule, so that it is kept for a person but decides nothing.
std::string rescuedText(std::string_view bytes);

} // namespace quorvane::rules
