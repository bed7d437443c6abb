#pragma once

namespace quorvane::rules {

// What a store has held since it was made that its shortcuts for many rules do not allow for.
struct RuleExceptions {
    bool strays = false; // a stored rule was changed so that it may belong to another group
    bool twins = false; // a record was stored that was already
    bool incomparable = false; // a rule that does not even equal itself, as a text of it is null
};

} // namespace quorvane::rules
