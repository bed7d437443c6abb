#pragma once

#include "rules/ChangeSet.h"
#include "rules/RuleManager.h"

#include <cstddef>
#include <string>
#include <vector>

// What the user does to rules, as changes of a store. Nothing here changes anything; for the thread that owns
// the store.

namespace quorvane::workflow {

// Deletes rules. Deliberate: of equal rules the first goes that is not yet gone, also when a later one is
// named.
rules::ChangeSet deletionOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules);

// Gives rules a tag, which changes nothing else.
rules::ChangeSet taggingOf(const std::vector<rules::RuleRef>& rules, const std::string& tag);

// Puts `rule` at the end of its application group, or of the watch rules, with a new value: the very record
// when it is stored, else in place of the first rule that is equal to what it was, else as a new rule.
rules::ChangeSet savingOf(
    const rules::RuleManager& store, const rules::RuleRef& rule, const rules::RuleValue& value);

// Adds a rule at the end of its application group, or of the watch rules. Duplicates are not looked for.
rules::ChangeSet additionOf(const rules::RuleRef& rule);

// What a new rule of the user has that is a copy of `rule`: everything but its creation time and its number.
rules::RuleValue newCopyOf(const rules::RuleValue& rule);

// "Delete 3 Rules": what is done, and to how many.
std::string actionName(const std::string& verb, std::size_t rules);

} // namespace quorvane::workflow
