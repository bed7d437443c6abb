#include "workflow/RuleEdits.h"

#include <unordered_set>
#include <utility>

namespace quorvane {

ChangeSet deletionOf(const RuleManager& store, const std::vector<RuleRef>& rules)
{
    ChangeSet change;
    std::unordered_set<const void*> gone;
    for (const RuleRef& rule : rules) {
        const auto first = store.firstEqualRule(rule, gone);
        if (!first)
            continue;
        gone.insert(addressOf(*first));
        change.removed.push_back({*first});
    }
    return change;
}

ChangeSet taggingOf(const std::vector<RuleRef>& rules, const std::string& tag)
{
    const NullableText shared(tag);
    ChangeSet change;
    for (const RuleRef& rule : rules) {
        const RuleValue before = valueOf(rule);
        RuleValue after = askValue(before, [&shared](auto fields) {
            fields.tag = shared;
            return RuleValue(makeRuleValue(std::move(fields)));
        });
        change.changed.push_back({rule, before, std::move(after)});
    }
    return change;
}

ChangeSet savingOf(const RuleManager& store, const RuleRef& rule, const RuleValue& value)
{
    ChangeSet change = additionOf(rule);
    change.added.front().value = value;
    if (store.isStored(rule))
        change.removed.push_back({rule});
    else if (const auto equal = store.firstEqualRule(rule, {}))
        change.removed.push_back({*equal});
    return change;
}

ChangeSet additionOf(const RuleRef& rule)
{
    ChangeSet change;
    change.added.push_back({rule, valueOf(rule), {}});
    return change;
}

RuleValue newCopyOf(const RuleValue& rule)
{
    return askValue(rule, [](auto fields) {
        fields.system = false;
        fields.sequence = 0;
        if constexpr (requires { fields.created; })
            fields.created = 0;
        return RuleValue(makeRuleValue(std::move(fields)));
    });
}

std::string actionName(const std::string& verb, std::size_t rules)
{
    return verb + (rules == 1 ? " Rule" : " " + std::to_string(rules) + " Rules");
}

} // namespace quorvane
