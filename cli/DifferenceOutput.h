#pragma once

#include "rules/RulesDiff.h"
#include "workflow/DifferenceText.h"

#include <cstddef>

namespace quorvane::cli {

class Output;

// Prints a difference in the common format of all commands: added rules, then removed ones, then changed
// ones; as text, after their row numbers if known, or as one object per line.
void writeDifference(Output& output, const rules::RulesDifference& difference, bool asJson,
    const workflow::RowsOfRules& rows = {});

// Further results of a command that changes rules, or would change them.
struct ChangeOutcome {
    std::size_t unchanged = 0; // rules that needed nothing
    bool isWritten = false; // false also when nothing had to be written
};

// Prints the last line or object of such a command: how many rules it changed.
void writeOutcome(
    Output& output, const rules::RulesDifference& difference, const ChangeOutcome& outcome, bool asJson);

} // namespace quorvane::cli
