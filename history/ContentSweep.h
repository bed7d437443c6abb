#pragma once

namespace quorvane::history {

class Database;

// What a sweep may cost. A chain of long contents takes seconds to unpack, so in passing it is left until
// half of it has become unused.
enum class SweepCost { inPassing, whateverItTakes };

// Removes the contents that no version refers to any longer, and packs those anew that were packed against
// them: each against the nearest contents before it that stay. What turns out to be damaged is marked so.
// Throws as ContentStore does; to be called inside a transaction.
void sweepContents(Database& database, SweepCost cost);

} // namespace quorvane::history
