#pragma once

#include "rules/RuleValue.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Lines of a rules file that hold more than one rule.
//
// The format's writer truncates a line with non-ASCII text (RuleLine.h), its line feed first, and the next
// rule continues on that line; a full disk joins lines as well. What is left of each rule can be separated
// again. All functions are pure, take any bytes and need linear time.

namespace quorvane::rules {

// A rule of a joined line, as far as its text has survived.
struct JoinedRule {
    // As read from a user's file. A further rule always has a known class and type; the first may have
    // unknown ones ("err"). A character cut at the join and blanks before the cut are not part of the texts;
    // other bytes that are not UTF-8 are.
    RuleValue rule;
    // The names of the properties whose text is cut or missing: of path, processName, tag, constraint,
    // operations, created, in this order. A lost closing quote counts as cut. Cut operations consist of the
    // letters that are left, a cut creation time is 0.
    std::vector<std::string_view> cut;
};

struct JoinedLine {
    std::size_t number; // from 1, as editors count: LF and CR LF end a line
    std::string_view text; // without its line end; points into the bytes given
    std::vector<JoinedRule> rules; // at least two
};

// The joined lines of a rules file, in order. A line is joined when the end of its rule's fields, or the cut,
// is followed by text that reads as a rule with known class and type and a quoted path. Comments never are;
// text inside the quotes of a complete field does not count.
std::vector<JoinedLine> joinedLines(std::string_view bytes);

// True when `line`, given without the line end that it had, is joined.
bool isJoinedLine(std::string_view line);

// The file with every rule of its joined lines on a separate line, and all other bytes unchanged. A complete
// rule keeps its bytes, a cut one is rewritten as a well-formed line without what was cut. One whose
// operations are lost stays too short for a rule, so that the text is kept for the user but decides nothing.
std::string rescuedText(std::string_view bytes);

} // namespace quorvane::rules
