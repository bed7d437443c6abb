#include "windows/EditPolicyWindowController.h"

#include "platform/Log.h"
#include "rules/ApplicationIdentity.h"
#include "rules/RuleManager.h"
#include "ui_EditPolicyWindowController.h"
#include "windows/QtText.h"
#include "windows/WindowLook.h"
#include "workflow/RuleEditorDelegate.h"

#include <QCloseEvent>

#include <utility>

namespace quorvane {

EditPolicyWindowController::EditPolicyWindowController(
    RuleManager& store, RunState& run, Workspace& workspace, Log& log, QWidget* parent)
    : QDialog(parent)
    , m_store(store)
    , m_run(run)
    , m_log(log)
    , m_ui(setUpUi<Ui::EditPolicyWindowController>(*this))
    , m_controls(widgetsOf(*m_ui, m_ui->policyTypePopUp), workspace, store.locations().noticeIconFile())
    , m_rule(std::make_shared<PolicyRule>())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setUpRuleTextField(*m_ui->constraintTextField);
    connectButtons(widgetsOf(*m_ui, m_ui->policyTypePopUp), *this);
}

EditPolicyWindowController::~EditPolicyWindowController() = default;

void EditPolicyWindowController::setPolicyRule(PolicyRulePtr rule)
{
    m_rule = std::move(rule);
}

void EditPolicyWindowController::setVisible(bool visible)
{
    const bool isFirst = visible && !std::exchange(m_isLoaded, true);
    if (isFirst)
        windowDidLoad();
    QDialog::setVisible(visible);
    if (isFirst)
        m_controls.showTextsFromStart();
}

void EditPolicyWindowController::windowDidLoad()
{
    updatePolicyEditor();
    for (QLineEdit* field : {m_ui->pathTextField, m_ui->processNameTextField, m_ui->constraintTextField})
        connect(field, &QLineEdit::textChanged, this, [this, field] { controlTextDidChange(field); });
    setTheme();
}

void EditPolicyWindowController::setTheme()
{
    applySheetLook(*this);
}

void EditPolicyWindowController::updatePolicyEditor()
{
    const PolicyRuleFields& fields = m_rule->fields();
    m_log.write("-[EditPolicyWindowController updatePolicyEditor] path " + std::string(fields.path.written())
        + " process " + std::string(fields.processName.written()));
    m_ui->policyClassPopUp->setCurrentIndex(fields.policyClass); // none of them for an unknown class
    m_controls.fill(*m_rule);
    showText(*m_ui->constraintTextField, fields.constraint);
    setApplicationIcon();
    setConstraintLabel();
    if (fields.system) {
        m_controls.showSystemRule();
        m_ui->policyClassPopUp->setEnabled(false);
        makeReadOnly(*m_ui->constraintTextField);
    } else {
        m_controls.showUserRule();
    }
    setWindowTitle(toQt(applicationNameForRule(*m_rule)));
    m_controls.applyCompleteness();
}

void EditPolicyWindowController::autoSetPolicyType()
{
    m_controls.autoSetType();
}

void EditPolicyWindowController::setConstraintLabel()
{
    m_ui->constraintTypeTextField->setText(toQt(constraintLabel(fromQt(m_ui->constraintTextField->text()))));
}

void EditPolicyWindowController::setApplicationIcon()
{
    m_controls.setApplicationIcon();
}

void EditPolicyWindowController::controlTextDidChange(const QLineEdit* field)
{
    if (field == m_ui->pathTextField) {
        m_controls.applyCompleteness();
        autoSetPolicyType();
    } else if (field == m_ui->processNameTextField) {
        setApplicationIcon();
        m_controls.applyCompleteness();
    } else if (field == m_ui->constraintTextField) {
        setConstraintLabel();
    }
}

std::optional<std::string> EditPolicyWindowController::fileDialog(const std::string& startPath)
{
    return choosePath(*this, startPath);
}

void EditPolicyWindowController::browsePathClicked()
{
    if (const auto path = fileDialog(m_controls.pathPanelStart()))
        m_controls.takePath(*path);
}

void EditPolicyWindowController::browseApplicationClicked()
{
    if (const auto path = fileDialog(m_controls.applicationPanelStart()))
        m_controls.takeApplication(*path);
}

void EditPolicyWindowController::saveClicked()
{
    m_log.write("-[EditPolicyWindowController saveClicked:]");
    if (m_rule->system())
        return cancelClicked();
    savePolicyRule(m_store, m_run, m_rule,
        {.common = m_controls.edited(),
            .policyClass = chosenCode(*m_ui->policyClassPopUp),
            .constraint = fromQt(m_ui->constraintTextField->text())});
    if (m_delegate != nullptr)
        m_delegate->reloadData();
    close();
}

void EditPolicyWindowController::cancelClicked()
{
    m_log.write("-[EditPolicyWindowController cancelClicked:]");
    close();
}

void EditPolicyWindowController::closeEvent(QCloseEvent* event)
{
    event->accept(); // without the detour over reject(), which is somebody's decision
}

} // namespace quorvane
