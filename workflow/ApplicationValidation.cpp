#include "workflow/ApplicationValidation.h"

#include "codesign/Digests.h"
#include "platform/Unicode.h"
#include "rules/ApplicationIdentity.h"
#include "rules/RuleIdentity.h"

namespace quorvane::workflow {

namespace {

constexpr std::size_t sha1Length = 40;
constexpr std::size_t sha256Length = 64;

bool needsNoProgram(bool isSystemRule, std::string_view applicationName, std::string_view path)
{
    if (isSystemRule || applicationName.starts_with("Any Process") || path.ends_with("/")
        || path.starts_with(":"))
        return true;
    return path.starts_with("/private/var/folders/") && path.ends_with(".");
}

// Deliberate: a program that cannot be read counts as an empty file.
bool matchesConstraint(const std::string& path, std::string_view constraint, ProgramFacts& facts)
{
    switch (constraintKind(constraint)) {
    case ConstraintKind::none:
        return true;
    case ConstraintKind::sha1:
        return facts.sha1(path).value_or(codesign::sha1({})) == constraint;
    case ConstraintKind::sha256:
        return facts.sha256(path).value_or(codesign::sha256({})) == constraint;
    case ConstraintKind::team:
        break;
    }
    // The marker alone is enough, whatever the program is.
    return constraint == platformMarker || facts.team(path) == constraint;
}

} // namespace

ConstraintKind constraintKind(std::string_view constraint)
{
    switch (platform::utf16Length(constraint)) {
    case 0:
        return ConstraintKind::none;
    case sha1Length:
        return ConstraintKind::sha1;
    case sha256Length:
        return ConstraintKind::sha256;
    default:
        return ConstraintKind::team;
    }
}

std::string_view programFaultWords(ProgramFault fault)
{
    switch (fault) {
    case ProgramFault::missing:
        return "program not found";
    case ProgramFault::constraintMismatch:
        return "does not match its constraint";
    case ProgramFault::parentMissing:
        return "parent program not found";
    }
    return {};
}

std::optional<ProgramFault> programFault(
    const rules::PolicyRule& rule, std::string_view applicationName, const RulesPlace& place)
{
    const std::string path = applicationPathForRule(rule);
    if (needsNoProgram(rule.fields().system, applicationName, path) || place.isUnknown(path))
        return std::nullopt;
    ProgramFacts& facts = place.facts();
    if (!facts.exists(path))
        return ProgramFault::missing;
    if (!matchesConstraint(path, rule.fields().constraint.view(), facts))
        return ProgramFault::constraintMismatch;
    const auto parent = applicationParentPathForRule(rule);
    if (parent && parent != "any" && !place.isUnknown(*parent) && !facts.exists(*parent))
        return ProgramFault::parentMissing;
    return std::nullopt;
}

std::optional<ProgramFault> programFault(const rules::RuleRef& rule, const RulesPlace& place)
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    return policy == nullptr ? std::nullopt
                             : programFault(*policy, shownApplicationNameForRule(*policy), place);
}

bool haveSameProgram(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b)
{
    return a.system == b.system && isOfSameApplication(a, b);
}

bool isValidApplicationPath(
    const rules::PolicyRule& rule, std::string_view applicationName, const RulesPlace& place)
{
    return !programFault(rule, applicationName, place);
}

TeamProof teamProof(const rules::RuleRef& rule, const RulesPlace& place)
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    if (policy == nullptr)
        return TeamProof::proven;
    const std::string path = applicationPathForRule(*policy);
    const std::string_view constraint = policy->fields().constraint.view();
    const bool needsTeam = constraintKind(constraint) == ConstraintKind::team && constraint != platformMarker;
    if (!needsTeam || place.isUnknown(path)
        || needsNoProgram(policy->fields().system, shownApplicationNameForRule(*policy), path))
        return TeamProof::proven;
    return place.facts().teamProof(path);
}

std::string_view teamProofWords(TeamProof proof)
{
    switch (proof) {
    case TeamProof::foreignRoot:
        return "signed under a root other than the platform vendor's";
    case TeamProof::codeDiffers:
        return "its code is not what was signed";
    case TeamProof::proven:
        break;
    }
    return {};
}

} // namespace quorvane::workflow
