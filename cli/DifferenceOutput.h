#pragma once

#include "rules/RulesDiff.h"
#include "workflow/DifferenceText.h"

#include <cstddef>

namespace quorvane::cli {

class Output;

// Prints what differs, as every command does that prints a difference: added rules, then removed ones, then
// changed ones; as text, behind the rows that are known, or as an object a line.
void writeDifference(Output& output, const rules::RulesDifference& difference, bool asJson,
    const workflow::RowsOfRules& rows = {});

// What a command that changes rules has done besides, or would have done.
struct ChangeOutcome {
    std::size_t unchanged = 0; // rules that needed nothing
    bool isWritten = false; // false also when nothing had to be
};

// The last line or object of such a command: how many rules it changed.
void writeOutcome(
    Output& output, const rules::RulesDifference& difference, const ChangeOutcome& outcome, bool asJson);

} // namespace quorvane::cli
