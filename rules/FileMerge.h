#pragma once

#include "rules/RulesMerge.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Brings together what two sides did to the same rules file, line by line: a rule merges as RulesMerge.h
// says, everything else as text, and what nobody changed keeps its bytes.
//
// - A line that one side alone has changed or re-spelt is that side's. Where both have, a rule is written
//   anew, whole, with tag and creation time merged one by one; of a text ours stays.
// - A line that one side removed goes, unless the other has changed the text or the tag.
// - The order is ours. What theirs adds stands immediately behind the line before it in theirs that is in the
//   result. Where there is none, a text stands at the top, and a rule at the end of its kind: with no rule
//   of that kind, a watch rule at the top and any other at the bottom. Of texts that both add in one place,
//   ours are first.
// - A line keeps its line end, as one that is written anew does; lines that come have the first line end of
//   ours, else of base, else LF.
// - Of a rule that stands more than once the first line decides: of others only how many there are merges,
//   the last ones go first.

namespace quorvane::rules {

// Where both sides changed something that is no rule.
struct TextConflict {
    enum Kind {
        changedOnBothSides, // other: the line of theirs
        keptForItsChange, // one side removed it, the other changed it; other: the line of the base
    };
    Kind kind;
    std::string kept; // as it is in the result, without its line end
    std::string other;
};

using FileConflict = std::variant<MergeReport, TextConflict>;

struct FileMergeResult {
    std::string text;
    std::vector<FileConflict> conflicts; // in the order of the result
};

// Of UTF-8 texts without NUL. Pure, from any thread; throws std::bad_alloc alone. Memory in proportion to the
// texts, and so is time, but for a logarithm where lines have moved.
FileMergeResult mergeFiles(std::string_view base, std::string_view ours, std::string_view theirs);

} // namespace quorvane::rules
