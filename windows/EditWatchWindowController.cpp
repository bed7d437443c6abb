#include "windows/EditWatchWindowController.h"

#include "platform/Log.h"
#include "rules/RuleManager.h"
#include "ui_EditWatchWindowController.h"
#include "windows/WindowLook.h"
#include "workflow/RuleEditorDelegate.h"

#include <QCloseEvent>

#include <utility>

namespace quorvane {

EditWatchWindowController::EditWatchWindowController(
    RuleManager& store, RunState& run, Workspace& workspace, Log& log, QWidget* parent)
    : QDialog(parent)
    , m_store(store)
    , m_run(run)
    , m_log(log)
    , m_ui(setUpUi<Ui::EditWatchWindowController>(*this))
    , m_controls(widgetsOf(*m_ui, m_ui->watchTypePopUp), workspace, store.locations().noticeIconFile())
    , m_rule(std::make_shared<WatchRule>())
{
    setAttribute(Qt::WA_DeleteOnClose);
    connectButtons(widgetsOf(*m_ui, m_ui->watchTypePopUp), *this);
}

EditWatchWindowController::~EditWatchWindowController() = default;

void EditWatchWindowController::setWatchRule(WatchRulePtr rule)
{
    m_rule = std::move(rule);
}

void EditWatchWindowController::setVisible(bool visible)
{
    const bool isFirst = visible && !std::exchange(m_isLoaded, true);
    if (isFirst)
        windowDidLoad();
    QDialog::setVisible(visible);
    if (isFirst)
        m_controls.showTextsFromStart();
}

void EditWatchWindowController::windowDidLoad()
{
    updateWatchEditor();
    for (QLineEdit* field : {m_ui->pathTextField, m_ui->processNameTextField})
        connect(field, &QLineEdit::textChanged, this, [this, field] { controlTextDidChange(field); });
    setTheme();
}

void EditWatchWindowController::setTheme()
{
    applySheetLook(*this);
}

void EditWatchWindowController::updateWatchEditor()
{
    const WatchRuleFields& fields = m_rule->fields();
    m_log.write("-[EditWatchWindowController updateWatchEditor] path " + std::string(fields.path.written())
        + " process " + std::string(fields.processName.written()));
    m_controls.fill(*m_rule);
    setApplicationIcon();
    if (fields.system)
        m_controls.showSystemRule();
    else
        m_controls.showUserRule();
    setWindowTitle(tr("Watch Rule"));
    m_controls.applyCompleteness();
}

void EditWatchWindowController::autoSetWatchType()
{
    m_controls.autoSetType();
}

void EditWatchWindowController::setApplicationIcon()
{
    m_controls.setApplicationIcon();
}

void EditWatchWindowController::controlTextDidChange(const QLineEdit* field)
{
    if (field == m_ui->pathTextField) {
        m_controls.applyCompleteness();
        autoSetWatchType();
    } else if (field == m_ui->processNameTextField) {
        setApplicationIcon();
        m_controls.applyCompleteness();
    }
}

std::optional<std::string> EditWatchWindowController::fileDialog(const std::string& startPath)
{
    return choosePath(*this, startPath);
}

void EditWatchWindowController::browsePathClicked()
{
    if (const auto path = fileDialog(m_controls.pathPanelStart()))
        m_controls.takePath(*path);
}

void EditWatchWindowController::browseApplicationClicked()
{
    if (const auto path = fileDialog(m_controls.applicationPanelStart()))
        m_controls.takeApplication(*path);
}

void EditWatchWindowController::saveClicked()
{
    m_log.write("-[EditWatchWindowController saveClicked:]");
    if (m_rule->system())
        return cancelClicked();
    saveWatchRule(m_store, m_run, m_rule, m_controls.edited());
    if (m_delegate != nullptr)
        m_delegate->reloadData();
    close();
}

void EditWatchWindowController::cancelClicked()
{
    m_log.write("-[EditWatchWindowController cancelClicked:]");
    close();
}

void EditWatchWindowController::closeEvent(QCloseEvent* event)
{
    event->accept(); // without the detour over reject(), which is somebody's decision
}

} // namespace quorvane
