#include "workflow/RuleImport.h"

#include "platform/PathComponents.h"
#include "workflow/FailSafeSuggestions.h"
#include "workflow/ProgramBinding.h"
#include "workflow/RulesDocument.h"

#include <string_view>
#include <utility>

namespace quorvane::workflow {

namespace {

std::string tagForFile(std::string_view path)
{
    constexpr std::string_view extension = ".quorv";
    std::string name(platform::lastPathComponent(path));
    for (std::size_t at = 0; (at = name.find(extension, at)) != std::string::npos;)
        name.erase(at, extension.size());
    return name.substr(0, name.find(','));
}

} // namespace

RuleImport::RuleImport(RulesDocument& document, RulesPlace place)
    : m_document(document)
    , m_store(document.store())
    , m_place(std::move(place))
{
}

void RuleImport::begin(const std::string& path)
{
    if (path == m_store.locations().failSafeFile())
        begin("Import Suggestions", {});
    else if (path == m_store.locations().userRulesFile())
        begin("Take Joined Lines Apart", {});
    else
        begin("Import " + std::string(platform::lastPathComponent(path)), tagForFile(path));
}

void RuleImport::beginPaste()
{
    begin("Paste Rules", {});
}

void RuleImport::begin(std::string action, std::string tag)
{
    m_currentImportTag = std::move(tag);
    m_tag = m_currentImportTag;
    m_action = std::move(action);
    m_done = {};
    m_importedRules = 0;
    m_addedRules = 0;
    m_constraints.clear();
    m_hadRoom = true;
}

rules::RuleRef RuleImport::importRule(const rules::RuleRef& rule)
{
    ++m_importedRules;
    m_document.begin();
    if (const rules::PolicyRule* policy = policyRuleIn(rule))
        return importPolicyRule(*policy);
    return importWatchRule(*std::get<rules::WatchRulePtr>(rule));
}

rules::WatchRulePtr RuleImport::importWatchRule(const rules::WatchRule& rule)
{
    rules::WatchRuleFields fields = rule.fields();
    if (fields.tag.view().empty())
        fields.tag = m_tag;
    auto imported = std::make_shared<rules::WatchRule>(std::move(fields));
    if (!m_store.firstEqualRule(*imported)) {
        noteAdded(imported, m_store.appendWatchRule(imported));
    }
    return imported;
}

rules::PolicyRulePtr RuleImport::importPolicyRule(const rules::PolicyRule& rule)
{
    rules::PolicyRuleFields fields = rule.fields();
    if (fields.tag.view().empty())
        fields.tag = m_tag;
    if (fields.constraint.view().empty()) {
        const rules::NullableText& constraint = constraintOfProgram(decidingProgram(fields.processName));
        if (!constraint.view().empty())
            fields.constraint = constraint;
    }
    auto imported = std::make_shared<rules::PolicyRule>(std::move(fields));
    if (!m_store.hasEqualPolicyRule(*imported)) {
        noteAdded(imported, m_store.addPolicyRule(imported));
    }
    return imported;
}

void RuleImport::noteAdded(const rules::RuleRef& rule, bool hadRoom)
{
    m_hadRoom = m_hadRoom && hadRoom;
    if (!hadRoom)
        return;
    m_done.added.push_back({rule, valueOf(rule), {}});
    ++m_addedRules;
}

const rules::NullableText& RuleImport::constraintOfProgram(const std::string& path)
{
    const auto known = m_constraints.find(path);
    return known != m_constraints.end()
        ? known->second
        : m_constraints.emplace(path, bindingOf(path, m_place.facts()).constraint).first->second;
}

ImportResult RuleImport::didFinishImportingRules()
{
    m_constraints.clear();
    std::optional<std::string> writeFailure = "Out of memory";
    if (m_hadRoom) {
        m_document.commit(std::exchange(m_done, {}), {m_action});
        if (m_document.failure() || areThereSuggestions(m_store.locations())) // they stay if this fails
            m_document.waitUntilWritten();
        writeFailure = m_document.failure();
    }
    // A file that was not written completely is not read again: the rules exist only in memory.
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

} // namespace quorvane::workflow
