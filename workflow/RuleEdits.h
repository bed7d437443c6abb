#pragma once

#include "rules/ChangeSet.h"
#include "rules/RuleManager.h"

#include <cstddef>
#include <string>
#include <vector>

// The user's edits as changes of a store. Only computes them, without changing anything; for the thread that
// owns the store.

namespace quorvane::workflow {

// Deletes rules. Deliberate: of equal rules the first remaining one is removed, even when a later one is
// named.
rules::ChangeSet deletionOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules);

// Sets the tag of rules and changes nothing else.
rules::ChangeSet taggingOf(const std::vector<rules::RuleRef>& rules, const std::string& tag);

// Puts `rule` at the end of its application group, or of the watch rules, with a new value: moves the record
// itself if it is stored, else replaces the first rule equal to its old value, else adds a new rule.
rules::ChangeSet savingOf(
    const rules::RuleManager& store, const rules::RuleRef& rule, const rules::RuleValue& value);

// Adds a rule at the end of its application group, or of the watch rules. Does not check for duplicates.
rules::ChangeSet additionOf(const rules::RuleRef& rule);

// The value of a new user rule that is a copy of `rule`: everything but its creation time and sequence
// number.
rules::RuleValue newCopyOf(const rules::RuleValue& rule);

// The name of an action: "Delete 3 Rules".
std::string actionName(const std::string& verb, std::size_t rules);

} // namespace quorvane::workflow
