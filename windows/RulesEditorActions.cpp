#include "windows/RulesEditorTableController.h"

#include "rules/RuleCodes.h"
#include "ui_RulesEditorTableController.h"
#include "windows/AsideController.h"
#include "windows/ExchangeController.h"
#include "windows/MapWindow.h"
#include "windows/PlaceMenu.h"
#include "windows/QtText.h"
#include "windows/RuleEditorWindow.h"
#include "windows/SelectionController.h"
#include "windows/TouchingWindow.h"
#include "windows/WindowLook.h"

#include <QClipboard>
#include <QGuiApplication>

// The commands of the main window on several rules, and the parts that perform them.

namespace quorvane::windows {

void RulesEditorTableController::setUpActionsOnMany()
{
    m_selection = std::make_unique<SelectionController>(*this, *this, m_document);
    auto* selection = m_selection.get();
    connect(
        this, &RulesEditorTableController::rulesDidChange, selection, &SelectionController::rulesDidChange);
    const auto onTrigger = [selection](QAction* item, auto command) {
        connect(item, &QAction::triggered, selection, command);
    };
    onTrigger(m_ui->tagMenuItem, &SelectionController::setTag);
    onTrigger(m_ui->operationsMenuItem, &SelectionController::changeOperations);
    onTrigger(m_ui->rebindMenuItem, &SelectionController::rebind);
    onTrigger(m_ui->clearConstraintMenuItem, &SelectionController::clearConstraint);
    onTrigger(m_ui->copyToProgramMenuItem, &SelectionController::copyToProgram);
    onTrigger(m_ui->programMovedMenuItem, qOverload<>(&SelectionController::moveProgram));
    onTrigger(m_ui->allowMenuItem, [selection] { selection->setClass(rules::PolicyClass::allow); });
    onTrigger(m_ui->denyMenuItem, [selection] { selection->setClass(rules::PolicyClass::deny); });
    onTrigger(m_ui->copyMenuItem,
        [selection] { QGuiApplication::clipboard()->setText(selection->selectedText()); });
    connect(m_ui->pasteMenuItem, &QAction::triggered, this,
        [this] { reviewText(QGuiApplication::clipboard()->text()); });
    connect(m_ui->duplicateMenuItem, &QAction::triggered, this, &RulesEditorTableController::duplicateRule);
    connect(m_ui->whatTouchesMenuItem, &QAction::triggered, this, &RulesEditorTableController::showTouching);
    connect(m_ui->mapMenuItem, &QAction::triggered, this, &RulesEditorTableController::showMap);

    m_aside = std::make_unique<AsideController>(*this, *this, m_document, m_workspace, m_log);
    auto* aside = m_aside.get();
    connect(this, &RulesEditorTableController::rulesDidChange, aside, &AsideController::rulesDidChange);
    connect(m_ui->setAsideMenuItem, &QAction::triggered, aside, &AsideController::setAside);
    connect(m_ui->asideMenuItem, &QAction::triggered, aside, &AsideController::showAside);

    const auto validate = [this] {
        const auto* table = m_ui->rulesEditorTableView;
        const bool anySelected = table->selectionModel()->hasSelection();
        for (QAction* item : {m_ui->copyMenuItem, m_ui->tagMenuItem, m_ui->allowMenuItem, m_ui->denyMenuItem,
                 m_ui->operationsMenuItem, m_ui->rebindMenuItem, m_ui->clearConstraintMenuItem,
                 m_ui->copyToProgramMenuItem, m_ui->programMovedMenuItem, m_ui->setAsideMenuItem})
            item->setEnabled(anySelected);
        m_ui->duplicateMenuItem->setEnabled(table->onlySelectedRow().has_value());
    };
    connect(this, &RulesEditorTableController::selectionDidChange, this, validate);
    validate();
}

void RulesEditorTableController::duplicateRule()
{
    const auto row = m_ui->rulesEditorTableView->onlySelectedRow();
    if (!row)
        return;
    const rules::RuleRef original = ruleRowAt(*row).rule;
    const rules::RuleRef copy = workflow::RuleCommands::newCopyOf(original);
    m_newRule = copy;
    edit(copy)->showDraft(workflow::draftOf(original));
}

void RulesEditorTableController::showTouching()
{
    if (m_touchingWindow.isNull()) {
        m_touchingWindow = new TouchingWindow(m_store, *this, m_workspace, this);
        m_touchingWindow->setPlace(m_places->place());
        connect(m_places, &PlaceMenu::placeChosen, m_touchingWindow.data(), &TouchingWindow::setPlace);
        connect(this, &RulesEditorTableController::rulesDidChange, m_touchingWindow.data(),
            &TouchingWindow::rulesDidChange);
    }
    bringToFront(*m_touchingWindow);
}

void RulesEditorTableController::showMap()
{
    if (m_mapWindow.isNull()) {
        m_mapWindow = new MapWindow(m_store, *this, this);
        connect(this, &RulesEditorTableController::rulesDidChange, m_mapWindow.data(),
            &MapWindow::rulesDidChange);
    }
    bringToFront(*m_mapWindow);
}

void RulesEditorTableController::reviewText(const QString& text)
{
    if (!m_exchange->reviewText(fromQt(text)))
        addNotice({.text = tr("There are no rules in that text."), .subject = QStringLiteral("paste")});
}

} // namespace quorvane::windows
