#include "windows/RulesEditorTableController.h"

#include "platform/Log.h"
#include "ui_RulesEditorTableController.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/QtText.h"
#include "windows/RulesTableModel.h"
#include "workflow/ApplicationServices.h"

#include <QKeyEvent>
#include <QMenu>
#include <QToolButton>

// The commands of the main window: they create, edit, delete and tag rules.

namespace quorvane {

namespace {

constexpr int applicationColumn = static_cast<int>(RuleColumn::application);
constexpr int stateColumn = static_cast<int>(RuleColumn::state);

} // namespace

void RulesEditorTableController::setUpCommands()
{
    m_rulesEditorContextualMenu = new QMenu(tr("Rule"), this);
    m_newRuleMenuItem = m_rulesEditorContextualMenu->addAction(
        tr("New Rule..."), this, &RulesEditorTableController::createNewPolicy);
    m_editRuleMenuItem
        = m_rulesEditorContextualMenu->addAction(tr("Edit"), this, &RulesEditorTableController::editRule);
    m_deleteRuleMenuItem
        = m_rulesEditorContextualMenu->addAction(tr("Delete"), this, &RulesEditorTableController::deleteRule);

    const auto onTrigger = [this](QAction* item, void (RulesEditorTableController::*command)()) {
        connect(item, &QAction::triggered, this, command);
    };
    onTrigger(m_ui->newRuleToolbarItem, &RulesEditorTableController::newPolicyAction);
    onTrigger(m_ui->newPolicyRuleMenuItem, &RulesEditorTableController::newPolicyRule);
    onTrigger(m_ui->newWatchRuleMenuItem, &RulesEditorTableController::newWatchRule);
    onTrigger(m_ui->editSelectedRuleMenuItem, &RulesEditorTableController::doubleClickAction);
    onTrigger(m_ui->deleteRuleToolbarItem, &RulesEditorTableController::deleteRuleAction);
    onTrigger(m_ui->deleteEditMenuItem, &RulesEditorTableController::deleteRuleAction);
    onTrigger(m_ui->editTagMenuItem, &RulesEditorTableController::editTagOfSelectedRule);
    // The button itself makes an allow or deny rule; its arrow offers both kinds.
    auto* newRuleButton
        = qobject_cast<QToolButton*>(m_ui->toolBar->widgetForAction(m_ui->newRuleToolbarItem));
    newRuleButton->setPopupMode(QToolButton::MenuButtonPopup);
    newRuleButton->addActions({m_ui->newPolicyRuleMenuItem, m_ui->newWatchRuleMenuItem});

    auto* table = m_ui->rulesEditorTableView;
    connect(table, &QAbstractItemView::doubleClicked, this, &RulesEditorTableController::doubleClickAction);
    connect(table, &RulesTableView::menuRequested, this, &RulesEditorTableController::menuWillOpen);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &RulesEditorTableController::validateItems);
    connect(m_model, &RulesTableModel::tagTyped, this, &RulesEditorTableController::tableViewCellAction);
    table->installEventFilter(this);
    validateItems();
}

void RulesEditorTableController::newPolicyAction()
{
    const PolicyRulePtr rule = RuleCommands::newPolicy();
    m_newRule = rule;
    editPolicy(rule);
}

void RulesEditorTableController::newWatchAction()
{
    const WatchRulePtr rule = RuleCommands::newWatch();
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
    if (!m_clickedRow)
        return;
    const PolicyRulePtr rule
        = RuleCommands::newPolicyLike(m_store.ruleAtIndex(*m_clickedRow, showsSystemRules()));
    m_newRule = rule;
    editPolicy(rule);
}

void RulesEditorTableController::editRule()
{
    if (m_clickedRow)
        editRuleAt(*m_clickedRow);
}

void RulesEditorTableController::deleteRule()
{
    if (m_clickedRow)
        deleteRow(*m_clickedRow);
}

void RulesEditorTableController::deleteRuleAction()
{
    deleteRows(m_ui->rulesEditorTableView->selectedRows());
}

void RulesEditorTableController::doubleClickAction()
{
    if (const auto row = m_ui->rulesEditorTableView->onlySelectedRow())
        editRuleAt(*row);
}

void RulesEditorTableController::editRuleAt(std::size_t row)
{
    const RuleRef rule = m_store.ruleAtIndex(row, showsSystemRules());
    if (const auto* policy = std::get_if<PolicyRulePtr>(&rule))
        editPolicy(*policy);
    else
        editWatch(std::get<WatchRulePtr>(rule));
}

void RulesEditorTableController::editPolicy(const PolicyRulePtr& rule)
{
    m_editPolicyWindowController = new EditPolicyWindowController(m_store, m_run, m_workspace, m_log, this);
    m_editPolicyWindowController->setPolicyRule(rule);
    m_editPolicyWindowController->setDelegate(this);
    m_editPolicyWindowController->show();
}

void RulesEditorTableController::editWatch(const WatchRulePtr& rule)
{
    m_editWatchWindowController = new EditWatchWindowController(m_store, m_run, m_workspace, m_log, this);
    m_editWatchWindowController->setWatchRule(rule);
    m_editWatchWindowController->setDelegate(this);
    m_editWatchWindowController->show();
}

void RulesEditorTableController::deleteRow(std::size_t row)
{
    apply(m_commands.deleteRow(row, showsSystemRules()));
}

void RulesEditorTableController::deleteRows(const std::vector<std::size_t>& rows)
{
    const TableChange change = m_commands.deleteRows(rows, showsSystemRules());
    apply(change);
    for (const std::size_t row : change.removedRows)
        m_model->remakeCells(row, {applicationColumn});
}

void RulesEditorTableController::editTagOfSelectedRule()
{
    if (const auto row = m_ui->rulesEditorTableView->onlySelectedRow())
        m_ui->rulesEditorTableView->edit(m_model->index(static_cast<int>(*row), 0));
}

void RulesEditorTableController::tableViewCellAction(const QString& tag)
{
    std::optional<std::size_t> first;
    m_ui->rulesEditorTableView->anySelectedRow([&first](std::size_t row) {
        first = row;
        return true;
    });
    display(m_commands.setTag(first, fromQt(tag), showsSystemRules()));
    tellFailure();
}

void RulesEditorTableController::apply(const TableChange& change)
{
    if (!m_model->removeRules(change.removedRows))
        reloadTable();
    if (change.newGroupHead)
        m_model->remakeCells(*change.newGroupHead, {applicationColumn, stateColumn});
    validateItems();
    tellCounts();
    tellFailure();
    tellReview();
    display(change.notice);
}

void RulesEditorTableController::display(const std::optional<Notice>& notice)
{
    if (notice)
        m_application.displayNotice(notice->header, notice->message, false);
}

void RulesEditorTableController::menuWillOpen(int clickedRow, const QPoint& globalPosition)
{
    m_clickedRow = static_cast<std::size_t>(clickedRow);
    m_ui->rulesEditorTableView->selectRow(clickedRow);
    for (QAction* item : m_rulesEditorContextualMenu->actions())
        item->setEnabled(validateMenuItem(item));
    m_rulesEditorContextualMenu->popup(globalPosition);
}

bool RulesEditorTableController::validateToolbarItem(const QAction* item) const
{
    if (item != m_ui->deleteRuleToolbarItem)
        return true;
    return m_ui->rulesEditorTableView->anySelectedRow(
        [this](std::size_t row) { return !isSystemRule(m_model->ruleAt(static_cast<int>(row))); });
}

bool RulesEditorTableController::validateMenuItem(const QAction* item) const
{
    if (item == m_deleteRuleMenuItem || item == m_editRuleMenuItem) {
        m_log.write("-[RulesEditorTableController validateMenuItem:]");
        return m_clickedRow && !isSystemRule(m_store.ruleAtIndex(*m_clickedRow, showsSystemRules()));
    }
    if (item == m_ui->deleteEditMenuItem || item == m_ui->exportSelectedRulesMenuItem)
        return m_ui->rulesEditorTableView->selectionModel()->hasSelection();
    if (item == m_ui->editSelectedRuleMenuItem || item == m_ui->editTagMenuItem)
        return m_ui->rulesEditorTableView->onlySelectedRow().has_value();
    return true;
}

void RulesEditorTableController::validateItems()
{
    m_ui->deleteRuleToolbarItem->setEnabled(validateToolbarItem(m_ui->deleteRuleToolbarItem));
    for (QAction* item : {m_ui->deleteEditMenuItem, m_ui->exportSelectedRulesMenuItem,
             m_ui->editSelectedRuleMenuItem, m_ui->editTagMenuItem})
        item->setEnabled(validateMenuItem(item));
}

void RulesEditorTableController::showNewRule()
{
    for (int row = 0; m_newRule && row < m_model->rowCount(); ++row) {
        if (m_model->ruleAt(row) != *m_newRule)
            continue;
        m_ui->rulesEditorTableView->selectRow(row);
        m_ui->rulesEditorTableView->scrollTo(m_model->index(row, 0));
        m_newRule.reset();
    }
}

bool RulesEditorTableController::keyDown(const QKeyEvent& key)
{
    if (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (const auto row = m_ui->rulesEditorTableView->onlySelectedRow()) {
            const RuleRef rule = m_store.ruleAtIndex(*row, showsSystemRules());
            if (const auto* policy = std::get_if<PolicyRulePtr>(&rule))
                editPolicy(*policy);
        }
        return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        deleteRuleAction();
        return true;
    default:
        return false;
    }
}

bool RulesEditorTableController::eventFilter(QObject* watched, QEvent* event)
{
    // The return that ends the edit of a tag comes by as well, from the field that has the keyboard then.
    if (event->type() == QEvent::KeyPress && watched == m_ui->rulesEditorTableView
        && m_ui->rulesEditorTableView->hasFocus() && keyDown(*static_cast<QKeyEvent*>(event)))
        return true;
    return QMainWindow::eventFilter(watched, event);
}

} // namespace quorvane
