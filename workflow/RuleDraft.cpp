#include "workflow/RuleDraft.h"

#include "rules/RuleCodes.h"

#include <utility>

namespace quorvane::workflow {

namespace {

std::optional<std::int32_t> codeUpTo(std::int32_t last, std::int32_t code)
{
    return code >= 0 && code <= last ? std::optional(code) : std::nullopt;
}

template <class Fields> RuleDraft commonDraft(const Fields& fields)
{
    return {.policyType = codeUpTo(rules::PolicyType::suffix, fields.policyType),
        .path = std::string(fields.path.view()),
        .processName = std::string(fields.processName.view()),
        .operations = operationsForBoxes(boxesForOperations(fields.operations))};
}

RuleDraft draftOfFields(const rules::WatchRuleFields& fields)
{
    return commonDraft(fields);
}

RuleDraft draftOfFields(const rules::PolicyRuleFields& fields)
{
    RuleDraft draft = commonDraft(fields);
    draft.policyClass = codeUpTo(rules::PolicyClass::deny, fields.policyClass);
    draft.constraint = fields.constraint.view();
    return draft;
}

template <class Fields> void applyCommon(const RuleDraft& draft, Fields& fields)
{
    if (draft.policyType)
        fields.policyType = *draft.policyType;
    fields.path = draft.path;
    fields.processName = draft.processName;
    fields.operations = draft.operations;
}

void applyTo(rules::WatchRuleFields& fields, const RuleDraft& draft)
{
    applyCommon(draft, fields);
}

void applyTo(rules::PolicyRuleFields& fields, const RuleDraft& draft)
{
    applyCommon(draft, fields);
    if (draft.policyClass)
        fields.policyClass = *draft.policyClass;
    fields.constraint = draft.constraint;
}

} // namespace

OperationBoxes boxesForOperations(std::uint32_t operations)
{
    OperationBoxes boxes{};
    for (std::size_t box = 0; box < boxes.size(); ++box)
        boxes[box] = (operations >> box & 1U) != 0;
    return boxes;
}

std::uint32_t operationsForBoxes(const OperationBoxes& boxes)
{
    std::uint32_t operations = 0;
    for (std::size_t box = 0; box < boxes.size(); ++box)
        operations |= (boxes[box] ? 1U : 0U) << box;
    return operations;
}

RuleDraft draftOf(const rules::RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return draftOfFields(record.fields()); });
}

rules::RuleValue valueWithDraft(const rules::RuleValue& rule, const RuleDraft& draft)
{
    return askValue(rule, [&draft](auto fields) {
        applyTo(fields, draft);
        return rules::RuleValue(makeRuleValue(std::move(fields)));
    });
}

} // namespace quorvane::workflow
