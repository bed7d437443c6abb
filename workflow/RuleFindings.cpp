#include "workflow/RuleFindings.h"

#include "platform/Account.h"
#include "platform/FileBytes.h"
#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"

#include <array>

namespace quorvane {

namespace {

template <class Rule> std::string textOf(const Rule& rule)
{
    std::string line = ruleLine(rule.fields());
    line.pop_back(); // the line feed
    return line;
}

bool startsWithAny(std::string_view path, std::initializer_list<std::string_view> starts)
{
    for (const std::string_view start : starts) {
        if (path.starts_with(start))
            return true;
    }
    return false;
}

std::string faultText(ProgramFault fault)
{
    switch (fault) {
    case ProgramFault::missing:
        return "Nothing exists at the path of the program.";
    case ProgramFault::constraintMismatch:
        return "The program does not match the rule's constraint.";
    case ProgramFault::parentMissing:
        return "Nothing exists at the path of the parent program.";
    }
    return {};
}

void addProgramFault(std::vector<RuleFinding>& findings, const RuleRef& rule)
{
    if (const auto fault = programFault(rule))
        findings.push_back({FindingKind::invalidProgram, {}, fault});
}

void addRedundancy(std::vector<RuleFinding>& findings, const RuleManager& store, const RuleRef& rule)
{
    const PolicyRule* policy = policyRuleIn(rule);
    if (const PolicyRule* covering = policy == nullptr ? nullptr : store.coveringRule(*policy))
        findings.push_back({FindingKind::redundant, textOf(*covering), {}});
}

void addPathFindings(std::vector<RuleFinding>& findings, const RuleRef& rule, HomePaths homePaths)
{
    if (isPathMissing(rule, homePaths))
        findings.push_back({FindingKind::missingPath, {}, {}});
    const bool readsBack = askRule(rule,
        [](const auto& record) { return record.fields().system || readsBackAsWritten(record.fields()); });
    if (!readsBack)
        findings.push_back({FindingKind::doesNotReadBack, {}, {}});
}

} // namespace

std::string_view findingName(FindingKind kind)
{
    constexpr std::array<std::string_view, 4> names{"redundant", "invalid", "missing", "unwritable"};
    return names[static_cast<std::size_t>(kind)];
}

std::string findingText(const RuleFinding& finding)
{
    switch (finding.kind) {
    case FindingKind::redundant:
        return "Redundant: covered by " + finding.coveredBy;
    case FindingKind::invalidProgram:
        return finding.programFault ? faultText(*finding.programFault) : "";
    case FindingKind::missingPath:
        return "Nothing exists at this path.";
    case FindingKind::doesNotReadBack:
        return "This rule does not read back from the rules file as it is now: it holds text other than "
               "ASCII, a "
               "double quote, a blank at the end of a field, or no operations. Saving may lose it and the "
               "rule after "
               "it.";
    }
    return {};
}

std::string ruleText(const RuleRef& rule)
{
    return askRule(rule, [](const auto& record) { return textOf(record); });
}

bool isPathMissing(const RuleRef& rule, HomePaths homePaths)
{
    return askRule(rule, [homePaths](const auto& record) {
        const auto& fields = record.fields();
        const std::string_view path = fields.path.view();
        const bool inHome = path.starts_with("~/");
        if (fields.policyType == PolicyType::suffix || fields.system)
            return false;
        if (inHome ? homePaths == HomePaths::neverMissing : !path.starts_with("/"))
            return false;
        // Deliberate: the resources can no longer come this far, but are named with the devices all the same.
        if (startsWithAny(path, {":NVRAM/", ":ATTACH/", ":IOKIT/", ":KMOD/", "/dev/"}))
            return false;
        return !isAnythingAt(
            inHome ? homeDirectory() + "/" + std::string(path.substr(2)) : std::string(path));
    });
}

std::vector<RuleFinding> findingsForRule(const RuleManager& store, const RuleRef& rule)
{
    std::vector<RuleFinding> findings;
    addRedundancy(findings, store, rule);
    addProgramFault(findings, rule);
    addPathFindings(findings, rule, HomePaths::lookedUp);
    return findings;
}

std::vector<RuleFinding> pathFindingsForRule(
    const RuleManager& store, const RuleRef& rule, HomePaths homePaths)
{
    std::vector<RuleFinding> findings;
    addRedundancy(findings, store, rule);
    addPathFindings(findings, rule, homePaths);
    return findings;
}

} // namespace quorvane
