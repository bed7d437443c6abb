#include "workflow/RuleFindings.h"

#include "platform/Account.h"
#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"

#include <array>

#include <sys/stat.h>

namespace quorvane {

namespace {

bool fileExists(const std::string& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0;
}

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

} // namespace

std::string_view findingName(FindingKind kind)
{
    constexpr std::array<std::string_view, 3> names{"redundant", "missing", "unwritable"};
    return names[static_cast<std::size_t>(kind)];
}

std::string findingText(const RuleFinding& finding)
{
    switch (finding.kind) {
    case FindingKind::redundant:
        return "Redundant: covered by " + finding.coveredBy;
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

bool isPathMissing(const RuleRef& rule)
{
    return askRule(rule, [](const auto& record) {
        const auto& fields = record.fields();
        const std::string_view path = fields.path.view();
        const bool inHome = path.starts_with("~/");
        if (fields.policyType == PolicyType::suffix || fields.system)
            return false;
        if (!inHome && !path.starts_with("/"))
            return false;
        // Deliberate: the resources can no longer come this far, but are named with the devices all the same.
        if (startsWithAny(path, {":NVRAM/", ":ATTACH/", ":IOKIT/", ":KMOD/", "/dev/"}))
            return false;
        return !fileExists(inHome ? homeDirectory() + "/" + std::string(path.substr(2)) : std::string(path));
    });
}

std::vector<RuleFinding> findingsForRule(const RuleManager& store, const RuleRef& rule)
{
    std::vector<RuleFinding> findings;
    if (const PolicyRule* policy = policyRuleIn(rule)) {
        if (const PolicyRule* covering = store.coveringRule(*policy)) {
            findings.push_back({FindingKind::redundant, textOf(*covering)});
        }
    }
    if (isPathMissing(rule))
        findings.push_back({FindingKind::missingPath, {}});
    const bool readsBack = askRule(rule,
        [](const auto& record) { return record.fields().system || readsBackAsWritten(record.fields()); });
    if (!readsBack)
        findings.push_back({FindingKind::doesNotReadBack, {}});
    return findings;
}

} // namespace quorvane
