#pragma once

namespace quorvane::history {

class Database;

// What a sweep may cost. A chain of long contents takes seconds to unpack, so an incidental sweep skips it
// until half of it has become unused.
enum class SweepCost { inPassing, whateverItTakes };

// Removes the contents that no version refers to any longer, and repacks those that were packed against them:
// each against the nearest earlier contents that stay. Contents found damaged are marked. Throws like
// ContentStore; call it inside a transaction.
void sweepContents(Database& database, SweepCost cost);

} // namespace quorvane::history
