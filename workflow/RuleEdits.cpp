#include "workflow/RuleEdits.h"

#include <utility>

namespace quorvane::workflow {

rules::ChangeSet deletionOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules)
{
    rules::ChangeSet change;
    change.removed.reserve(rules.size());
    for (rules::RuleRef& rule : store.firstEqualRules(rules))
        change.removed.push_back({std::move(rule)});
    return change;
}

rules::ChangeSet taggingOf(const std::vector<rules::RuleRef>& rules, const std::string& tag)
{
    const rules::NullableText shared(tag);
    rules::ChangeSet change;
    for (const rules::RuleRef& rule : rules) {
        const rules::RuleValue before = valueOf(rule);
        rules::RuleValue after = askValue(before, [&shared](auto fields) {
            fields.tag = shared;
            return rules::RuleValue(makeRuleValue(std::move(fields)));
        });
        change.changed.push_back({rule, before, std::move(after)});
    }
    return change;
}

rules::ChangeSet savingOf(
    const rules::RuleManager& store, const rules::RuleRef& rule, const rules::RuleValue& value)
{
    rules::ChangeSet change = additionOf(rule);
    change.added.front().value = value;
    if (store.isStored(rule))
        change.removed.push_back({rule});
    else if (const auto equal = store.firstEqualRule(rule, {}))
        change.removed.push_back({*equal});
    return change;
}

rules::ChangeSet additionOf(const rules::RuleRef& rule)
{
    rules::ChangeSet change;
    change.added.push_back({rule, valueOf(rule), {}});
    return change;
}

rules::RuleValue newCopyOf(const rules::RuleValue& rule)
{
    return askValue(rule, [](auto fields) {
        fields.system = false;
        fields.sequence = 0;
        if constexpr (requires { fields.created; })
            fields.created = 0;
        return rules::RuleValue(makeRuleValue(std::move(fields)));
    });
}

std::string actionName(const std::string& verb, std::size_t rules)
{
    return verb + (rules == 1 ? " Rule" : " " + std::to_string(rules) + " Rules");
}

} // namespace quorvane::workflow
