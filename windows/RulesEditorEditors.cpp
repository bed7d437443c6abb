#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/RulesEditorTableController.h"

#include "platform/Log.h"
#include "ui_RulesEditorTableController.h"
#include "windows/PlaceMenu.h"
#include "windows/RulesTableModel.h"

#include <utility>

// The rule editors that the main window opens, and the drafts of those that are open when the program ends.

namespace quorvane::windows {

namespace {

QString keptDraftsSubject()
{
    return QStringLiteral("kept drafts");
}

} // namespace

void RulesEditorTableController::newPolicyAction()
{
    const rules::PolicyRulePtr rule = workflow::RuleCommands::newPolicy();
    m_newRule = rule;
    editPolicy(rule);
}

void RulesEditorTableController::newWatchAction()
{
    const rules::WatchRulePtr rule = workflow::RuleCommands::newWatch();
    m_newRule = rule;
    editWatch(rule);
}

void RulesEditorTableController::newPolicyRule()
{
    m_log.write("-[RulesEditorTableController newPolicyRule:]");
    newPolicyAction();
}

void RulesEditorTableController::newWatchRule()
{
    m_log.write("-[RulesEditorTableController newWatchRule:]");
    newWatchAction();
}

void RulesEditorTableController::createNewPolicy()
{
    if (!m_clickedRule)
        return;
    const rules::PolicyRulePtr rule = workflow::RuleCommands::newPolicyLike(*m_clickedRule);
    m_newRule = rule;
    editPolicy(rule);
}

void RulesEditorTableController::editRule()
{
    if (m_clickedRule)
        edit(*m_clickedRule);
}

void RulesEditorTableController::doubleClickAction()
{
    if (const auto row = m_ui->rulesEditorTableView->onlySelectedRow())
        edit(ruleRowAt(*row).rule);
}

RuleEditorWindow* RulesEditorTableController::edit(const rules::RuleRef& rule)
{
    if (const auto* policy = std::get_if<rules::PolicyRulePtr>(&rule)) {
        editPolicy(*policy);
        return m_editPolicyWindowController;
    }
    editWatch(std::get<rules::WatchRulePtr>(rule));
    return m_editWatchWindowController;
}

void RulesEditorTableController::editPolicy(const rules::PolicyRulePtr& rule)
{
    m_editPolicyWindowController = new EditPolicyWindowController(m_document, m_workspace, m_log, this);
    m_editPolicyWindowController->setPlace(m_places->place());
    m_editPolicyWindowController->setPolicyRule(rule);
    m_editPolicyWindowController->setDelegate(this);
    m_editPolicyWindowController->show();
}

void RulesEditorTableController::editWatch(const rules::WatchRulePtr& rule)
{
    m_editWatchWindowController = new EditWatchWindowController(m_document, m_workspace, m_log, this);
    m_editWatchWindowController->setPlace(m_places->place());
    m_editWatchWindowController->setWatchRule(rule);
    m_editWatchWindowController->setDelegate(this);
    m_editWatchWindowController->show();
}

void RulesEditorTableController::showNewRule()
{
    const auto row = m_newRule ? m_model->rowOf(*m_newRule) : std::nullopt;
    if (!row)
        return;
    selectRule(*row);
    m_newRule.reset();
}

void RulesEditorTableController::keepUnsavedRules()
{
    if (std::exchange(m_unsavedRulesKept, true))
        return;
    for (const auto* editor : findChildren<RuleEditorWindow*>()) {
        if (editor->hasUnsavedChanges())
            m_keptDrafts.keep({editor->rule(), editor->draft()});
    }
}

void RulesEditorTableController::offerKeptRules()
{
    const auto count = static_cast<int>(m_keptDrafts.count());
    if (count == 0)
        return;
    const QString text
        = count == 1 ? tr("1 unsaved rule was kept.") : tr("%1 unsaved rules were kept.").arg(count);
    m_ui->notices->add(
        {text, {{tr("Open"), [this] { openKeptRules(); }}, {tr("Discard"), [this] { m_keptDrafts.take(); }}},
            keptDraftsSubject()});
}

// Edits the store's rule if it is unchanged; else a new one, which a save adds.
void RulesEditorTableController::openKeptRules()
{
    for (const KeptDraft& kept : m_keptDrafts.take()) {
        const std::optional<rules::RuleRef> stored = storedRuleLike(kept.rule);
        if (!stored)
            m_newRule = kept.rule;
        edit(stored.value_or(kept.rule))->showDraft(kept.draft);
    }
}

std::optional<rules::RuleRef> RulesEditorTableController::storedRuleLike(const rules::RuleRef& rule) const
{
    return visitRule(rule, [this](const auto& record) -> std::optional<rules::RuleRef> {
        const auto stored = m_store.firstEqualRule(record);
        if (stored == nullptr || stored->system()) // editors do not change system rules
            return std::nullopt;
        return stored;
    });
}

} // namespace quorvane::windows
