#include "workflow/RuleImport.h"

#include "codesign/ProtectedPath.h"
#include "platform/PathComponents.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/RulesDocument.h"

#include <string_view>
#include <utility>

namespace quorvane {

namespace {

constexpr const char* platformBinary = "APPLE_PF_BINARY";

std::string tagForFile(std::string_view path)
{
    constexpr std::string_view extension = ".quorv";
    std::string name(lastPathComponent(path));
    for (std::size_t at = 0; (at = name.find(extension, at)) != std::string::npos;)
        name.erase(at, extension.size());
    return name.substr(0, name.find(','));
}

// The program that decides about the rule's constraint; empty when there is none.
std::string decidingProgram(const PolicyRule& rule)
{
    std::string path = applicationPathForRule(rule);
    return path == "any" ? applicationParentPathForRule(rule).value_or(std::string()) : path;
}

} // namespace

RuleImport::RuleImport(RulesDocument& document, ProgramFacts& facts)
    : m_document(document)
    , m_store(document.store())
    , m_facts(facts)
{
}

void RuleImport::begin(const std::string& path)
{
    m_currentImportTag = path == m_store.locations().failSafeFile() ? std::string() : tagForFile(path);
    m_tag = m_currentImportTag;
    m_action = path == m_store.locations().failSafeFile() ? "Import Suggestions"
                                                          : "Import " + std::string(lastPathComponent(path));
    m_done = {};
    m_importedRules = 0;
    m_addedRules = 0;
    m_constraints.clear();
}

RuleRef RuleImport::importRule(const RuleRef& rule)
{
    ++m_importedRules;
    m_document.begin();
    if (const PolicyRule* policy = policyRuleIn(rule))
        return importPolicyRule(*policy);
    return importWatchRule(*std::get<WatchRulePtr>(rule));
}

WatchRulePtr RuleImport::importWatchRule(const WatchRule& rule)
{
    WatchRuleFields fields = rule.fields();
    if (fields.tag.view().empty())
        fields.tag = m_tag;
    auto imported = std::make_shared<WatchRule>(std::move(fields));
    if (!m_store.firstEqualRule(*imported)) {
        m_store.appendWatchRule(imported);
        noteAdded(imported);
    }
    return imported;
}

PolicyRulePtr RuleImport::importPolicyRule(const PolicyRule& rule)
{
    PolicyRuleFields fields = rule.fields();
    if (fields.tag.view().empty())
        fields.tag = m_tag;
    if (fields.constraint.view().empty()) {
        const NullableText& constraint = constraintOfProgram(decidingProgram(rule));
        if (!constraint.view().empty())
            fields.constraint = constraint;
    }
    auto imported = std::make_shared<PolicyRule>(std::move(fields));
    if (!m_store.hasEqualPolicyRule(*imported)) {
        m_store.addPolicyRule(imported);
        noteAdded(imported);
    }
    return imported;
}

void RuleImport::noteAdded(const RuleRef& rule)
{
    m_done.added.push_back({rule, valueOf(rule), {}});
    ++m_addedRules;
}

const NullableText& RuleImport::constraintOfProgram(const std::string& path)
{
    const auto known = m_constraints.find(path);
    return known != m_constraints.end() ? known->second
                                        : m_constraints.emplace(path, findConstraint(path)).first->second;
}

// Empty for a program that cannot be bound to anything.
std::string RuleImport::findConstraint(const std::string& path)
{
    if (!m_facts.exists(path) || m_facts.isFolder(path))
        return {};
    if (auto team = m_facts.team(path); team && !team->empty())
        return *team;
    if (m_facts.platformIdentifier(path) != 0)
        return platformBinary;
    // A program that cannot be read may have a team all the same.
    return isSIP(path) || !m_facts.isReadable(path) ? std::string() : m_facts.sha256(path);
}

ImportResult RuleImport::didFinishImportingRules()
{
    m_constraints.clear();
    m_document.commit(std::exchange(m_done, {}), {m_action});
    m_document.waitUntilWritten();
    const std::optional<std::string> writeFailure = m_document.failure();
    // A file that was not written whole is not read again: the rules are nowhere but in memory.
    if (!writeFailure) {
        m_document.reload();
        m_document.discardSuggestions();
    }
    if (m_importedRules == 0)
        return {{"Import Failed", "Found no rules to import"}, false, writeFailure};
    m_document.markChanged();
    m_store.rebuildRulesCache();
    return {{"Import Successful", "Successfully imported " + std::to_string(m_importedRules) + " rules"},
        true, writeFailure};
}

} // namespace quorvane
