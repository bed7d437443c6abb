#include "windows/RuleEditorWindow.h"

#include "platform/Log.h"
#include "windows/PlainText.h"
#include "windows/WindowLook.h"
#include "workflow/RuleEditing.h"
#include "workflow/RuleEditorDelegate.h"
#include "workflow/RulesDocument.h"

#include <QLineEdit>
#include <QPushButton>

#include <utility>

namespace quorvane::windows {

RuleEditorWindow::RuleEditorWindow(LogNames names, workflow::RulesDocument& document, platform::Log& log,
    rules::RuleRef rule, QWidget* parent)
    : QDialog(parent)
    , m_names(names)
    , m_document(document)
    , m_log(log)
    , m_rule(std::move(rule))
{
    setAttribute(Qt::WA_DeleteOnClose);
}

void RuleEditorWindow::setUpControls(const RuleEditorWidgets& widgets, desktop::Workspace& workspace)
{
    m_controls.emplace(widgets, workspace, m_document.store().locations().noticeIconFile());
    const auto onClick = [this](const QPushButton* button, void (RuleEditorWindow::*slot)()) {
        connect(button, &QPushButton::clicked, this, slot);
    };
    onClick(widgets.browsePathButton, &RuleEditorWindow::browsePathClicked);
    onClick(widgets.browseProcessButton, &RuleEditorWindow::browseApplicationClicked);
    onClick(widgets.saveButton, &RuleEditorWindow::saveClicked);
    onClick(widgets.cancelButton, &RuleEditorWindow::cancelClicked);
}

void RuleEditorWindow::setVisible(bool visible)
{
    const bool isFirst = visible && !m_loaded;
    if (isFirst)
        windowDidLoad();
    QDialog::setVisible(visible);
    if (isFirst)
        m_controls->showTextsFromStart();
}

void RuleEditorWindow::windowDidLoad()
{
    updateEditor();
    m_loaded = draft();
    const RuleEditorWidgets& widgets = m_controls->widgets();
    for (QLineEdit* field :
        {widgets.pathTextField, widgets.processNameTextField, widgets.constraintTextField}) {
        if (field != nullptr)
            connect(field, &QLineEdit::textChanged, this, [this, field] { controlTextDidChange(field); });
    }
    setTheme();
}

void RuleEditorWindow::setTheme()
{
    applySheetLook(*this);
}

void RuleEditorWindow::updateEditor()
{
    visitRule(m_rule, [this](const auto& record) {
        writeLog(m_names.update,
            " path " + std::string(record.path().written()) + " process "
                + std::string(record.processName().written()));
    });
    m_controls->fill(workflow::draftOf(m_rule));
    setApplicationIcon();
    setConstraintLabel();
    if (isSystemRule(m_rule))
        m_controls->showSystemRule();
    else
        m_controls->showUserRule();
    setWindowTitle(plainTitle(title()));
    m_controls->applyCompleteness();
}

void RuleEditorWindow::controlTextDidChange(const QLineEdit* field)
{
    const RuleEditorWidgets& widgets = m_controls->widgets();
    if (field == widgets.pathTextField) {
        m_controls->applyCompleteness();
        autoSetType();
    } else if (field == widgets.processNameTextField) {
        setApplicationIcon();
        m_controls->applyCompleteness();
    } else if (field == widgets.constraintTextField) {
        setConstraintLabel();
    }
}

std::optional<std::string> RuleEditorWindow::fileDialog(const std::string& startPath)
{
    return choosePath(*this, startPath);
}

void RuleEditorWindow::browsePathClicked()
{
    if (const auto path = fileDialog(m_controls->pathPanelStart()))
        m_controls->takePath(*path);
}

void RuleEditorWindow::browseApplicationClicked()
{
    if (const auto path = fileDialog(m_controls->applicationPanelStart()))
        m_controls->takeApplication(*path);
}

void RuleEditorWindow::saveClicked()
{
    writeLog("saveClicked:");
    if (isSystemRule(m_rule))
        return cancelClicked();
    saveRule(m_document, m_rule, draft());
    if (m_delegate != nullptr)
        m_delegate->reloadData();
    close();
}

void RuleEditorWindow::cancelClicked()
{
    writeLog("cancelClicked:");
    close();
}

// Not through reject(), as a dialog by default: that means the user cancelled.
void RuleEditorWindow::closeEvent(QCloseEvent* /*event*/)
{
    m_isClosed = true;
}

void RuleEditorWindow::writeLog(const char* operation, const std::string& more)
{
    m_log.write(std::string("-[") + m_names.window + ' ' + operation + ']' + more);
}

} // namespace quorvane::windows
