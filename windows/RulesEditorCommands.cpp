#include "windows/RulesEditorTableController.h"

#include "platform/Log.h"
#include "ui_RulesEditorTableController.h"
#include "windows/ExchangeController.h"
#include "windows/ExchangeDrop.h"
#include "windows/QtText.h"
#include "windows/RowsRefresh.h"
#include "windows/RulesFileFollower.h"
#include "windows/RulesTableModel.h"
#include "workflow/ApplicationServices.h"

#include <QKeyEvent>
#include <QMenu>
#include <QToolButton>

// The commands of the main window that delete and tag rules. Those for imports, exports and the rules file
// are forwarded.

namespace quorvane::windows {

namespace {

constexpr int applicationColumn = static_cast<int>(workflow::RuleColumn::application);
constexpr int stateColumn = static_cast<int>(workflow::RuleColumn::state);

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
    // The button itself creates an allow or deny rule; its arrow offers both kinds.
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

void RulesEditorTableController::deleteRule()
{
    if (const auto row = m_clickedRule ? m_model->rowOf(*m_clickedRule) : std::nullopt)
        deleteRow(static_cast<std::size_t>(*row));
}

void RulesEditorTableController::deleteRuleAction()
{
    deleteRows(m_ui->rulesEditorTableView->selectedRows());
}

workflow::RuleRow RulesEditorTableController::ruleRowAt(std::size_t row) const
{
    return {row, m_model->ruleAt(static_cast<int>(row))};
}

std::optional<rules::RuleRef> RulesEditorTableController::ruleBelow(std::size_t row) const
{
    return row + 1 < static_cast<std::size_t>(m_model->rowCount()) ? std::optional(ruleRowAt(row + 1).rule)
                                                                   : std::nullopt;
}

void RulesEditorTableController::deleteRow(std::size_t row)
{
    const std::optional<rules::RuleRef> following = ruleBelow(row);
    const rules::RuleRef* above = row == 0 ? nullptr : &m_model->ruleAt(static_cast<int>(row - 1));
    const workflow::TableChange change = m_commands.deleteRow(ruleRowAt(row), above);
    apply(change);
    if (change.headedItsGroup)
        m_model->remakeCells(row, {applicationColumn, stateColumn});
    selectAfterDelete(change, following);
}

void RulesEditorTableController::deleteRows(const std::vector<std::size_t>& rows)
{
    const std::optional<rules::RuleRef> following = rows.empty() ? std::nullopt : ruleBelow(rows.back());
    const auto deleted = [&] {
        if (rows.size() == static_cast<std::size_t>(m_model->rowCount()))
            return m_commands.deleteAllRows(m_model->rows(), m_model->rowsShowSystemRules());
        std::vector<workflow::RuleRow> rules;
        rules.reserve(rows.size());
        for (const std::size_t row : rows)
            rules.push_back(ruleRowAt(row));
        return m_commands.deleteRows(std::move(rules));
    };
    const workflow::TableChange change = deleted();
    apply(change);
    for (const std::size_t row : change.removedRows)
        m_model->remakeCells(row, {applicationColumn});
    selectAfterDelete(change, following);
}

// So that keyboard navigation continues from the same position.
void RulesEditorTableController::selectAfterDelete(
    const workflow::TableChange& change, const std::optional<rules::RuleRef>& following)
{
    if (change.removedRows.empty())
        return;
    whenRowsAreShown([this, following] {
        if (m_ui->rulesEditorTableView->selectionModel()->hasSelection())
            return;
        const auto row = following ? m_model->rowOf(*following) : std::nullopt;
        selectRule(row.value_or(m_model->rowCount() - 1));
    });
}

void RulesEditorTableController::selectRule(int row)
{
    m_ui->rulesEditorTableView->selectRow(row);
    m_ui->rulesEditorTableView->scrollTo(m_model->index(row, 0));
}

void RulesEditorTableController::editTagOfSelectedRule()
{
    if (const auto row = m_ui->rulesEditorTableView->onlySelectedRow())
        m_ui->rulesEditorTableView->edit(m_model->index(static_cast<int>(*row), 0));
}

void RulesEditorTableController::tableViewCellAction(const QString& tag)
{
    std::optional<workflow::RuleRow> first;
    m_ui->rulesEditorTableView->anySelectedRow([&](std::size_t row) {
        first = ruleRowAt(row);
        return true;
    });
    m_application.display(m_commands.setTag(first, fromQt(tag)));
    showFailure();
    Q_EMIT rulesDidChange();
}

void RulesEditorTableController::apply(const workflow::TableChange& change)
{
    if (m_refresh->isWorking() || !m_model->removeRules())
        reloadTable();
    validateItems();
    updateCounts();
    showFailure();
    m_exchange->presentRulesDidChange();
    reportRemaining(change.remaining);
    m_application.display(change.notice);
    Q_EMIT rulesDidChange();
}

void RulesEditorTableController::menuWillOpen(int clickedRow, const QPoint& globalPosition)
{
    m_clickedRule = m_model->ruleAt(clickedRow);
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
        return m_clickedRule && !isSystemRule(*m_clickedRule);
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
    Q_EMIT selectionDidChange();
}

// On X11 a key held down produces pairs of a release and a press with the same time stamp. Qt recognizes them
// as repeats only when it happens to read both at once.
bool RulesEditorTableController::isRepeat(const QKeyEvent& key) const
{
    return key.isAutoRepeat() || (key.timestamp() != 0 && key.timestamp() == m_lastKeyRelease);
}

bool RulesEditorTableController::keyDown(const QKeyEvent& key)
{
    if (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (const auto row = m_ui->rulesEditorTableView->onlySelectedRow()) {
            const rules::RuleRef rule = ruleRowAt(*row).rule;
            if (const auto* policy = std::get_if<rules::PolicyRulePtr>(&rule))
                editPolicy(*policy);
        }
        return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (!isRepeat(key)) // a key held down would also affect the following rules
            deleteRuleAction();
        return true;
    default:
        return false;
    }
}

bool RulesEditorTableController::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyRelease && watched == m_ui->rulesEditorTableView)
        m_lastKeyRelease = static_cast<QKeyEvent*>(event)->timestamp();
    // The Return key that ends the edit of a tag arrives here too, from the field that has the focus then.
    if (event->type() == QEvent::KeyPress && watched == m_ui->rulesEditorTableView
        && m_ui->rulesEditorTableView->hasFocus() && keyDown(*static_cast<QKeyEvent*>(event)))
        return true;
    return QMainWindow::eventFilter(watched, event);
}

void RulesEditorTableController::setUpExchange()
{
    for (QAction* item : {m_ui->importToolbarItem, m_ui->importMenuItem})
        connect(item, &QAction::triggered, this, &RulesEditorTableController::importRules);
    connect(m_ui->exportMenuItem, &QAction::triggered, this, &RulesEditorTableController::exportRules);
    connect(m_ui->exportSelectedRulesMenuItem, &QAction::triggered, this,
        &RulesEditorTableController::exportSelectedRules);
    connect(m_exchange.get(), &ExchangeController::rulesWereReloaded, this,
        &RulesEditorTableController::rulesWereReloaded);
    const auto* drop = new ExchangeDrop(*this);
    connect(drop, &ExchangeDrop::filesWereDropped, this, &RulesEditorTableController::reviewFiles);
    connect(drop, &ExchangeDrop::textWasDropped, this, &RulesEditorTableController::reviewText);
}

void RulesEditorTableController::reviewFiles(const std::vector<std::string>& paths)
{
    m_exchange->reviewFiles(paths);
}

void RulesEditorTableController::exportRules()
{
    m_exchange->exportRules();
}

void RulesEditorTableController::exportSelectedRules()
{
    m_exchange->exportSelectedRules(selectedRules());
}

void RulesEditorTableController::importRules()
{
    m_exchange->importRules();
}

void RulesEditorTableController::handleFileImport(const std::optional<std::string>& path)
{
    m_exchange->handleFileImport(path);
}

void RulesEditorTableController::handleFailSafeImport()
{
    m_exchange->handleFailSafeImport();
}

void RulesEditorTableController::importRule(const rules::RuleRef& rule)
{
    m_exchange->importRule(rule);
}

bool RulesEditorTableController::didFinishImportingRules()
{
    return m_exchange->didFinishImportingRules();
}

void RulesEditorTableController::relaunchAfterDelay(float delay)
{
    m_follower->relaunchAfterDelay(delay);
}

} // namespace quorvane::windows
