#pragma once

#include "rules/RulesDiff.h"

namespace quorvane {

class Output;

// Prints what differs, as every command does that prints a difference: added rules, then removed ones, then
// changed ones; as text or as an object a line.
void writeDifference(Output& output, const RulesDifference& difference, bool asJson);

} // namespace quorvane
