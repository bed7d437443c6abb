#include "cli/Commands.h"
#include "cli/Output.h"
#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"
#include "workflow/RuleEdits.h"
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

} // namespace

int addCommand(const CommandContext& context, const SpelledRule& spelled)
{
    const auto user = openForWriting(context.locations, context.log);
    if (!user)
        return 1;
    const RuleRef rule = recordOf(spelled);
    if (!askRule(rule, [](const auto& record) { return readsBackAsWritten(record.fields()); }))
        complain("warning: " + findingText({FindingKind::doesNotReadBack, {}, {}}));
    user->document.perform(additionOf(rule), {actionName("Add", 1)});
    return user->status();
}

int deleteCommand(const CommandContext& context, const SpelledRule& spelled)
{
    const auto user = openForWriting(context.locations, context.log);
    if (!user)
        return 1;
    const RuleRef wanted = recordOf(spelled);
    const auto stored = user->store->firstEqualRule(wanted, {});
    if (!stored) {
        complain("no rule is equal to " + ruleText(wanted));
        return 1;
    }
    if (isSystemRule(*stored)) {
        complain("a system rule cannot be deleted: " + ruleText(wanted));
        return 1;
    }
    user->document.perform(deletionOf(*user->store, {wanted}), {actionName("Delete", 1)});
    return user->status();
}

} // namespace quorvane
