#include "workflow/RuleFindings.h"

#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"
#include "workflow/RuleOverlaps.h"

#include <algorithm>
#include <utility>

namespace quorvane::workflow {

namespace {

struct KindTexts {
    std::string_view name;
    std::string_view title;
    std::string_view text;
};

constexpr std::array<KindTexts, findingKindCount> kindTexts{{
    {"redundant", "Redundant", "Another rule covers this one, which therefore has no effect of its own."},
    {"invalid", "Program is gone or another",
        "The rule's program is gone, or is not the one that its constraint pins."},
    {"missing", "Path is gone", "Nothing exists at the rule's path."},
    {"unwritable", "Does not read back", "The rule does not read back from a rules file as it is."},
    {"joined", "Several rules on one line",
        "The line holds more than one rule: the writing of the file was cut short there."},
    {"overlap", "Overlaps", "An allowing and a denying rule speak of the same program, path and operation."},
    {"unproven", "Team is not proven",
        "Nothing proves that the program comes from the team that the rule trusts."},
}};

const KindTexts& textsOf(FindingKind kind)
{
    return kindTexts[static_cast<std::size_t>(kind)];
}

template <class Rule> std::string textOf(const Rule& rule)
{
    std::string line = ruleLine(rule.fields());
    line.pop_back(); // the line feed
    return line;
}

bool startsWithAny(std::string_view path, std::initializer_list<std::string_view> starts)
{
    return std::any_of(
        starts.begin(), starts.end(), [path](std::string_view start) { return path.starts_with(start); });
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

std::string doubtText(TeamProof proof)
{
    return proof == TeamProof::foreignRoot
        ? "The program's team is only a name: it is signed under a root other than the platform vendor's."
        : "The program's code is not what its team has signed.";
}

void addRedundancy(
    std::vector<RuleFinding>& findings, const rules::RuleManager& store, const rules::RuleRef& rule)
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    if (const rules::PolicyRule* covering = policy == nullptr ? nullptr : store.coveringRule(*policy))
        findings.push_back({FindingKind::redundant, covering});
}

bool readsBack(const rules::RuleRef& rule)
{
    return visitRule(rule,
        [](const auto& record) { return record.fields().system || readsBackAsWritten(record.fields()); });
}

ProgramFindings programFindings(const rules::RuleRef& rule, const FindingSearch& search)
{
    const bool asksForProof = search.kinds.contains(FindingKind::unproven);
    ProgramFindings program;
    if (asksForProof || search.kinds.contains(FindingKind::invalidProgram))
        program.fault = programFault(rule, search.place);
    if (asksForProof && !program.fault)
        program.proof = teamProof(rule, search.place);
    return program;
}

void addFindingsOfRuleAlone(std::vector<RuleFinding>& findings, const rules::RuleRef& rule,
    const FindingSearch& search, const ProgramFindings& program)
{
    const auto& [kinds, place] = search;
    if (program.fault && kinds.contains(FindingKind::invalidProgram))
        findings.push_back({FindingKind::invalidProgram, nullptr, program.fault});
    if (kinds.contains(FindingKind::missingPath) && isPathMissing(rule, place))
        findings.push_back({FindingKind::missingPath});
    if (kinds.contains(FindingKind::doesNotReadBack) && !readsBack(rule))
        findings.push_back({FindingKind::doesNotReadBack});
    if (program.proof != TeamProof::proven)
        findings.push_back({FindingKind::unproven, nullptr, std::nullopt, program.proof});
}

std::vector<RuleFinding> findingsWith(const rules::RuleManager& store, const rules::RuleRef& rule,
    const FindingSearch& search, const ProgramFindings& program)
{
    std::vector<RuleFinding> findings;
    if (search.kinds.contains(FindingKind::redundant))
        addRedundancy(findings, store, rule);
    addFindingsOfRuleAlone(findings, rule, search, program);
    return findings;
}

bool isUserPolicyRule(const rules::RuleRef& rule)
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    return policy != nullptr && !policy->fields().system;
}

} // namespace

std::string_view findingName(FindingKind kind)
{
    return textsOf(kind).name;
}

std::optional<FindingKind> findingKindNamed(std::string_view name)
{
    const auto found = std::find_if(allFindingKinds.begin(), allFindingKinds.end(),
        [name](FindingKind kind) { return findingName(kind) == name; });
    return found == allFindingKinds.end() ? std::nullopt : std::optional(*found);
}

std::string_view findingTitle(FindingKind kind)
{
    return textsOf(kind).title;
}

std::string_view findingKindText(FindingKind kind)
{
    return textsOf(kind).text;
}

bool needsPlace(FindingKind kind)
{
    return kind == FindingKind::invalidProgram || kind == FindingKind::missingPath
        || kind == FindingKind::unproven;
}

FindingKinds FindingKinds::all()
{
    FindingKinds kinds;
    kinds.m_kinds.set();
    return kinds;
}

FindingKinds FindingKinds::usual()
{
    FindingKinds kinds = all();
    kinds.remove(FindingKind::overlap);
    return kinds;
}

std::string findingText(const RuleFinding& finding)
{
    switch (finding.kind) {
    case FindingKind::redundant:
        return "Redundant: covered by " + (finding.other == nullptr ? "" : ruleText(*finding.other));
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
    case FindingKind::joined:
        return "This line holds more than one rule.";
    case FindingKind::overlap:
        return "Overlaps with " + (finding.other == nullptr ? "" : ruleText(*finding.other));
    case FindingKind::unproven:
        return doubtText(finding.teamProof);
    }
    return {};
}

std::string_view findingReason(const RuleFinding& finding)
{
    return finding.programFault ? programFaultWords(*finding.programFault)
                                : teamProofWords(finding.teamProof);
}

std::string ruleText(const rules::RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return textOf(record); });
}

std::string ruleText(const rules::PolicyRule& rule)
{
    return textOf(rule);
}

bool isPathMissing(const rules::RuleRef& rule, const RulesPlace& place)
{
    return visitRule(rule, [&place](const auto& record) {
        const auto& fields = record.fields();
        const std::string_view path = fields.path.view();
        if (fields.policyType == rules::PolicyType::suffix || fields.system
            || !startsWithAny(path, {"/", "~/"}))
            return false;
        // Deliberate: resources can no longer get here, but are still listed together with the devices.
        if (startsWithAny(path, {":NVRAM/", ":ATTACH/", ":IOKIT/", ":KMOD/", "/dev/"}))
            return false;
        return place.isMissing(path);
    });
}

std::vector<RuleFinding> findingsOfRuleAlone(const rules::RuleRef& rule, const FindingSearch& search)
{
    std::vector<RuleFinding> findings;
    addFindingsOfRuleAlone(findings, rule, search, programFindings(rule, search));
    return findings;
}

std::vector<RuleFinding> findingsForRule(
    const rules::RuleManager& store, const rules::RuleRef& rule, const FindingSearch& search)
{
    return findingsWith(store, rule, search, programFindings(rule, search));
}

std::vector<RuleFinding> pathFindingsForRule(
    const rules::RuleManager& store, const rules::RuleRef& rule, const RulesPlace& place)
{
    return findingsForRule(store, rule,
        {{FindingKind::redundant, FindingKind::missingPath, FindingKind::doesNotReadBack}, place});
}

RowFindings::RowFindings(const rules::RuleManager& store, bool includeSystemRules, FindingSearch search)
    : m_store(store)
    , m_rows(store.rows())
    , m_includeSystemRules(includeSystemRules)
    , m_search(std::move(search))
{
    if (!m_search.kinds.contains(FindingKind::overlap))
        return;
    std::vector<const rules::PolicyRuleFields*> rules;
    for (std::size_t row = 0; row < m_rows->count(includeSystemRules); ++row) {
        const rules::RuleRef& rule = m_rows->at(row, includeSystemRules);
        rules.push_back(isUserPolicyRule(rule) ? &policyRuleIn(rule)->fields() : nullptr);
    }
    m_overlapped = firstOverlaps(rules);
}

const ProgramFindings& RowFindings::programOf(const rules::RuleRef& rule) const
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    const bool isKnown = policy != nullptr && m_lastAsked && haveSameProgram(policy->fields(), **m_lastAsked);
    if (!isKnown) {
        m_lastProgram = programFindings(rule, m_search);
        m_lastAsked = policy == nullptr ? std::nullopt : std::optional(policy->presentValue());
    }
    return m_lastProgram;
}

std::vector<RuleFinding> RowFindings::at(std::size_t row) const
{
    const rules::RuleRef& rule = m_rows->at(row, m_includeSystemRules);
    std::vector<RuleFinding> findings = findingsWith(m_store, rule, m_search, programOf(rule));
    if (m_overlapped.empty() || m_overlapped[row] == noOverlap)
        return findings;
    const rules::RuleRef& other = m_rows->at(m_overlapped[row], m_includeSystemRules);
    const auto place = std::find_if(findings.begin(), findings.end(),
        [](const RuleFinding& finding) { return finding.kind > FindingKind::overlap; });
    findings.insert(place, RuleFinding{FindingKind::overlap, policyRuleIn(other)});
    return findings;
}

} // namespace quorvane::workflow
