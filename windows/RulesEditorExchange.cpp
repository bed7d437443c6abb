#include "windows/RulesEditorTableController.h"

#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "ui_RulesEditorTableController.h"
#include "windows/ExchangePanels.h"
#include "windows/FilePanel.h"
#include "windows/ImportWindowController.h"
#include "windows/QtText.h"
#include "windows/RulesTableModel.h"
#include "workflow/FailSafeSuggestions.h"
#include "workflow/RulesExport.h"

#include <utility>

// The main window's exchange of rules through files: exports, and imports by way of a review.

namespace quorvane {

void RulesEditorTableController::setUpExchange()
{
    for (QAction* item : {m_ui->importToolbarItem, m_ui->importMenuItem})
        connect(item, &QAction::triggered, this, &RulesEditorTableController::importRules);
    connect(m_ui->exportMenuItem, &QAction::triggered, this, &RulesEditorTableController::exportRules);
    connect(m_ui->exportSelectedRulesMenuItem, &QAction::triggered, this,
        &RulesEditorTableController::exportSelectedRules);
}

void RulesEditorTableController::exportRules()
{
    std::string address = "file://" + m_store.locations().userRulesFile();
    for (std::size_t at = 0; (at = address.find(' ', at)) != std::string::npos;)
        address.replace(at, 1, "%20");
    showSavePanel(*this, tr("Export All Rules"), m_store.locations().exchangeFileName(),
        [source = pathOfAddress(address)](
            const QUrl& destination) { exportRulesFile(source, fromQt(destination.toLocalFile())); });
}

void RulesEditorTableController::exportSelectedRules()
{
    std::vector<RuleRef> rules;
    for (const std::size_t row : m_ui->rulesEditorTableView->selectedRows())
        rules.push_back(m_model->ruleAt(static_cast<int>(row)));
    showSavePanel(*this, tr("Export Selected Rules"), m_store.locations().exchangeFileName(),
        [this, rules](const QUrl& destination) { writeRules(rules, pathFromPanel(destination)); });
}

void RulesEditorTableController::writeRules(const std::vector<RuleRef>& rules, const std::string& path)
{
    if (isSameFile(path, m_store.locations().userRulesFile())) {
        m_log.write("not exporting to '" + path + "': the rules that are not selected would be lost");
        return;
    }
    // What the window tells of failures is about the user's own file.
    const std::optional<std::string> earlierMessage = m_store.lastErrorMessage();
    m_store.writeToFile(path, rules);
    if (const auto& message = m_store.lastErrorMessage())
        m_log.write("error on export: " + *message);
    m_store.setLastErrorMessage(earlierMessage);
}

void RulesEditorTableController::importRules()
{
    const std::optional<QUrl> chosen
        = chooseExchangeFile(*this, tr("Import Files"), m_store.locations().extrasFolder());
    handleFileImport(chosen ? std::optional(pathFromPanel(*chosen)) : std::nullopt);
}

void RulesEditorTableController::handleFileImport(const std::optional<std::string>& path)
{
    m_log.write("-[RulesEditorTableController handleFileImport:] " + path.value_or("(null)"));
    if (!path || isImporting() || !isTextAt(*path))
        return;
    // Not closed: an earlier review goes without a trace, and suggestions under review stay for the next.
    delete m_importWindowController;
    m_importWindowController = new ImportWindowController(m_store, m_workspace, m_log, this);
    m_importWindowController->setAttribute(Qt::WA_DeleteOnClose);
    m_importWindowController->setDelegate(this);
    m_importWindowController->setPath(*path);
    m_importWindowController->show();
    m_importWindowController->raise();
    m_importWindowController->activateWindow();
    m_import.begin(*path);
    display(suggestionsNotice(m_store.locations(), *path));
}

bool RulesEditorTableController::isImporting() const
{
    return m_importWindowController && m_importWindowController->isImporting();
}

// The user's rules may be others now.
void RulesEditorTableController::tellReview()
{
    if (m_importWindowController)
        m_importWindowController->presentRulesDidChange();
}

void RulesEditorTableController::importRule(const RuleRef& rule)
{
    m_import.importRule(rule);
}

bool RulesEditorTableController::didFinishImportingRules()
{
    const ImportResult result = m_import.didFinishImportingRules();
    m_store.setLastErrorMessage(result.writeFailure);
    reloadData(
        RuleIdentity::properties); // the store has read its file again, whether or not there was a rule
    display(result.notice);
    return !result.writeFailure;
}

} // namespace quorvane
