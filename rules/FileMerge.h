#pragma once

#include "rules/RulesMerge.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Three-way merge of a rules file, line by line: rules merge as RulesMerge.h says, everything else merges as
// text, and unchanged lines keep their bytes.
//
// - A line that only one side changed or respelled is taken from it. When both did, a rule is rewritten
//   completely, with tag and creation time merged separately; of a text ours is kept.
// - A line that one side removed is removed, unless the other has changed the text or the tag.
// - The order is ours. A line that theirs adds is placed directly behind the nearest line before it in theirs
//   that is in the result. If there is none, a text goes to the top, and a rule to the end of its kind: with
//   no rule of that kind, a watch rule goes to the top and any other to the bottom. Of texts that both add in
//   one place, ours are first.
// - A line keeps its line end, even when rewritten; added lines get the first line end of ours, else of base,
//   else LF.
// - Of a repeated rule only the first line is merged, and stays the first: for the others only their number
//   is merged, and the last ones are removed first.

namespace quorvane::rules {

// A conflict in a line that is not a rule.
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

// For UTF-8 texts without NUL. Pure, any thread; throws only std::bad_alloc. Linear memory and time, with a
// logarithmic factor where lines have moved.
FileMergeResult mergeFiles(std::string_view base, std::string_view ours, std::string_view theirs);

} // namespace quorvane::rules
