#include "workflow/RuleDraft.h"

#include "rules/RuleCodes.h"

namespace quorvane {

namespace {

std::optional<std::int32_t> codeUpTo(std::int32_t last, std::int32_t code)
{
    return code >= 0 && code <= last ? std::optional(code) : std::nullopt;
}

template <class Fields> RuleDraft commonDraft(const Fields& fields)
{
    return {.policyType = codeUpTo(PolicyType::suffix, fields.policyType),
        .path = std::string(fields.path.view()),
        .processName = std::string(fields.processName.view()),
        .operations = operationsForBoxes(boxesForOperations(fields.operations))};
}

RuleDraft draftOfFields(const WatchRuleFields& fields)
{
    return commonDraft(fields);
}

RuleDraft draftOfFields(const PolicyRuleFields& fields)
{
    RuleDraft draft = commonDraft(fields);
    draft.policyClass = codeUpTo(PolicyClass::deny, fields.policyClass);
    draft.constraint = fields.constraint.view();
    return draft;
}

template <class Rule> void applyCommon(const RuleDraft& draft, Rule& rule)
{
    if (draft.policyType)
        rule.setPolicyType(*draft.policyType);
    rule.setPath(draft.path);
    rule.setProcessName(draft.processName);
    rule.setOperations(draft.operations);
}

void applyTo(WatchRule& rule, const RuleDraft& draft)
{
    applyCommon(draft, rule);
}

void applyTo(PolicyRule& rule, const RuleDraft& draft)
{
    applyCommon(draft, rule);
    if (draft.policyClass)
        rule.setPolicyClass(*draft.policyClass);
    rule.setConstraint(draft.constraint);
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

RuleDraft draftOf(const RuleRef& rule)
{
    return askRule(rule, [](const auto& record) { return draftOfFields(record.fields()); });
}

void applyDraft(const RuleDraft& draft, const RuleRef& rule)
{
    std::visit([&](const auto& record) { applyTo(*record, draft); }, rule);
}

} // namespace quorvane
