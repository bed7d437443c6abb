#include "workflow/RuleEditing.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

namespace quorvane::workflow {

namespace {

constexpr std::string_view anyProgram = "any";

} // namespace

bool isCompleteRule(std::string_view path, std::string_view processName)
{
    return !path.empty() && !processName.empty();
}

std::int32_t policyTypeForPath(std::string_view path)
{
    if (path.starts_with('.'))
        return rules::PolicyType::suffix;
    return path.ends_with('/') ? rules::PolicyType::prefix : rules::PolicyType::path;
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

ProgramIcon iconForProcess(const std::string& processName, const RulesPlace& place)
{
    if (processName == anyProgram)
        return {.kind = ProgramIcon::Kind::lock};
    if (!place.root() || !place.root()->isAnythingAt(rules::applicationHeadForProcess(processName)))
        return {};
    // Deliberate: uses the whole text, not the program's path that was searched for.
    return {.kind = ProgramIcon::Kind::file, .file = rules::applicationBundlePathForPath(processName)};
}

std::string panelStart(std::string_view text, std::string_view fallback)
{
    return std::string(text.empty() || text == anyProgram ? fallback : text);
}

void saveRule(RulesDocument& document, const rules::RuleRef& rule, const RuleDraft& draft)
{
    const rules::ChangeSet change = savingOf(document.store(), rule, valueWithDraft(valueOf(rule), draft));
    document.perform(change, {actionName(change.removed.empty() ? "Add" : "Edit", 1)});
}

} // namespace quorvane::workflow
