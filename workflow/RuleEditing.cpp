#include "workflow/RuleEditing.h"

#include "platform/FileBytes.h"
#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "rules/RuleManager.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RunState.h"

namespace quorvane {

namespace {

constexpr std::string_view anyProgram = "any";

template <class Rule> void writeCommonFields(Rule& rule, const EditedWatchRule& edited)
{
    if (edited.policyType)
        rule.setPolicyType(*edited.policyType);
    rule.setPath(edited.path);
    rule.setProcessName(edited.processName);
    rule.setOperations(edited.operations);
}

} // namespace

bool isCompleteRule(std::string_view path, std::string_view processName)
{
    return !path.empty() && !processName.empty();
}

std::int32_t policyTypeForPath(std::string_view path)
{
    if (path.starts_with('.'))
        return PolicyType::suffix;
    return path.ends_with('/') ? PolicyType::prefix : PolicyType::path;
}

std::string_view constraintLabel(std::string_view constraint)
{
    switch (constraintKind(constraint)) {
    case ConstraintKind::sha1:
        return "SHA1";
    case ConstraintKind::sha256:
        return "SHA256";
    case ConstraintKind::none:
    case ConstraintKind::team:
        break;
    }
    return "Team ID";
}

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

ProgramIcon iconForProcess(const std::string& processName)
{
    if (processName == anyProgram)
        return {.kind = ProgramIcon::Kind::lock};
    if (!isAnythingAt(applicationHeadForProcess(processName)))
        return {};
    // Deliberate: asked with the whole text, not with the program's path that was looked for.
    return {.kind = ProgramIcon::Kind::file, .file = applicationBundlePathForPath(processName)};
}

std::string panelStart(std::string_view text, std::string_view fallback)
{
    return std::string(text.empty() || text == anyProgram ? fallback : text);
}

void savePolicyRule(
    RuleManager& store, RunState& run, const PolicyRulePtr& rule, const EditedPolicyRule& edited)
{
    run.g_dirty = 1;
    store.takeOutPolicyRule(*rule);
    if (edited.policyClass)
        rule->setPolicyClass(*edited.policyClass);
    writeCommonFields(*rule, edited.common);
    rule->setConstraint(edited.constraint);
    store.addPolicyRule(rule);
    store.writeToCurrentUserConfiguration();
}

void saveWatchRule(RuleManager& store, RunState& run, const WatchRulePtr& rule, const EditedWatchRule& edited)
{
    run.g_dirty = 1;
    store.takeOutWatchRule(*rule);
    writeCommonFields(*rule, edited);
    store.addWatchRule(rule);
    store.writeToCurrentUserConfiguration();
}

} // namespace quorvane
