#include "cli/Commands.h"
#include "cli/Output.h"
#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"
#include "workflow/RuleFindings.h"

namespace quorvane {

namespace {

RuleRef recordOf(const SpelledRule& spelled)
{
    if (spelled.ruleClass == policyClassDescription(PolicyClass::watch)) {
        WatchRuleFields fields;
        fields.policyType = policyTypeForString(spelled.type);
        fields.path = spelled.path;
        fields.processName = spelled.process;
        fields.operations = operationsForString(spelled.operations);
        fields.tag = spelled.tag;
        return std::make_shared<WatchRule>(std::move(fields));
    }
    PolicyRuleFields fields;
    fields.policyClass = policyClassForString(spelled.ruleClass);
    fields.policyType = policyTypeForString(spelled.type);
    fields.path = spelled.path;
    fields.processName = spelled.process;
    fields.operations = operationsForString(spelled.operations);
    fields.tag = spelled.tag;
    fields.constraint = spelled.constraint;
    return std::make_shared<PolicyRule>(std::move(fields));
}

int writeBack(RuleManager& store)
{
    store.writeToCurrentUserConfiguration();
    if (!store.lastErrorMessage())
        return 0;
    complain(*store.lastErrorMessage());
    return 1;
}

} // namespace

int addCommand(const CommandContext& context, const SpelledRule& spelled)
{
    const auto store = openForWriting(context.locations, context.log);
    if (!store)
        return 1;
    const RuleRef rule = recordOf(spelled);
    if (const auto* policy = std::get_if<PolicyRulePtr>(&rule))
        store->addPolicyRule(*policy);
    else
        store->addWatchRule(std::get<WatchRulePtr>(rule));
    if (!askRule(rule, [](const auto& record) { return readsBackAsWritten(record.fields()); }))
        complain("warning: " + findingText({FindingKind::doesNotReadBack, {}, {}}));
    return writeBack(*store);
}

int deleteCommand(const CommandContext& context, const SpelledRule& spelled)
{
    const auto store = openForWriting(context.locations, context.log);
    if (!store)
        return 1;
    const RuleRef wanted = recordOf(spelled);
    return askRule(wanted, [&](const auto& rule) {
        const auto stored = store->firstEqualRule(rule);
        if (!stored) {
            complain("no rule is equal to " + ruleText(wanted));
            return 1;
        }
        if (stored->fields().system) {
            complain("a system rule cannot be deleted: " + ruleText(wanted));
            return 1;
        }
        if constexpr (requires { rule.fields().constraint; })
            store->deletePolicyRule(rule);
        else
            store->deleteWatchRule(rule);
        return writeBack(*store);
    });
}

} // namespace quorvane
