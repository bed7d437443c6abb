#include "windows/ExchangeController.h"

#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "windows/ExchangePanels.h"
#include "windows/ImportWindowController.h"
#include "windows/QtText.h"
#include "windows/WindowLook.h"
#include "workflow/ApplicationServices.h"
#include "workflow/FailSafeSuggestions.h"
#include "workflow/JoinedRules.h"
#include "workflow/RulesDocument.h"
#include "workflow/RulesExport.h"

#include <chrono>
#include <memory>

namespace quorvane::windows {

namespace {

constexpr std::chrono::milliseconds untilSuggestions{500};
constexpr const char* pastedText = "pasted text"; // instead of a path, in the log

} // namespace

ExchangeController::ExchangeController(QWidget& window, workflow::ImportDelegate& delegate,
    workflow::RulesDocument& document, workflow::ApplicationServices& application,
    desktop::Workspace& workspace, platform::Log& log)
    : m_window(window)
    , m_delegate(delegate)
    , m_document(document)
    , m_store(document.store())
    , m_application(application)
    , m_workspace(workspace)
    , m_log(log)
    , m_import(document)
{
    m_untilSuggestions.setSingleShot(true);
    m_untilSuggestions.setTimerType(Qt::PreciseTimer); // other timers may fire up to 5 % early
    connect(&m_untilSuggestions, &QTimer::timeout, this, [this] {
        handleFailSafeImport();
        reviewNextFile();
    });
}

void ExchangeController::exportRules()
{
    showSavePanel(m_window, tr("Export All Rules"), m_store.locations().exchangeFileName(),
        [source = m_store.locations().userRulesFile()](
            const std::string& path) { workflow::exportRulesFile(source, path); });
}

void ExchangeController::exportSelectedRules(const std::vector<rules::RuleRef>& rules)
{
    showSavePanel(m_window, tr("Export Selected Rules"), m_store.locations().exchangeFileName(),
        [this, rules](const std::string& path) { writeRules(rules, path); });
}

void ExchangeController::writeRules(const std::vector<rules::RuleRef>& rules, const std::string& path)
{
    if (workflow::isSameFile(path, m_store.locations().userRulesFile())) {
        m_log.write("not exporting to '" + path + "': the rules that are not selected would be lost");
        return;
    }
    const rules::WriteResult result = quorvane::workflow::exportRules(path, rules);
    if (result.message)
        m_log.write("error on export: " + *result.message);
    for (const std::string& warning : result.warnings)
        m_log.write("on export: " + warning);
}

void ExchangeController::importRules()
{
    handleFileImport(chooseExchangeFile(m_window, tr("Import Files"), m_store.locations().extrasFolder()));
}

void ExchangeController::handleFileImport(const std::optional<std::string>& path)
{
    m_log.write("-[RulesEditorTableController handleFileImport:] " + path.value_or("(null)"));
    if (!path || isImporting() || !platform::isTextAt(*path))
        return;
    bringToFront(openReview(*path));
    m_application.display(workflow::suggestionsNotice(m_store.locations(), *path));
}

bool ExchangeController::reviewText(const std::string& text)
{
    const std::string lines = text.ends_with('\n') ? text : text + '\n'; // a line needs its line end
    const auto rules = rules::RuleManager::initWithText(lines, pastedText, m_store.locations(), m_log);
    if (isImporting() || rules->storedRules() == 0)
        return false;
    ImportWindowController& review = openReview();
    review.setText(lines);
    m_import.beginPaste();
    bringToFront(review);
    return true;
}

ImportWindowController& ExchangeController::openReview()
{
    // Deleted, not closed: closing would discard the suggestions, which stay for the next review.
    delete m_importWindowController;
    m_importWindowController = new ImportWindowController(m_document, m_workspace, m_log, &m_window);
    m_importWindowController->setAttribute(Qt::WA_DeleteOnClose);
    m_importWindowController->setPlace(m_place);
    m_import.setPlace(m_place);
    connect(m_importWindowController, &QObject::destroyed, this, &ExchangeController::reviewNextFile,
        Qt::QueuedConnection);
    m_importWindowController->setDelegate(&m_delegate);
    return *m_importWindowController;
}

ImportWindowController& ExchangeController::openReview(const std::string& path)
{
    ImportWindowController& review = openReview();
    review.setPath(path);
    m_import.begin(path);
    return review;
}

void ExchangeController::reviewJoinedLines()
{
    if (isImporting())
        return;
    ImportWindowController& review = openReview(m_store.locations().userRulesFile());
    review.listJoinedLinesOnly();
    bringToFront(review);
}

void ExchangeController::lookForJoinedLines()
{
    auto lines = std::make_shared<std::size_t>(0);
    m_thread.run(
        [lines, path = m_store.locations().userRulesFile()] {
            *lines = workflow::joinedLineCountOfFile(path);
        },
        [this, lines] {
            if (*lines > 0)
                Q_EMIT joinedLinesFound(*lines);
        });
}

void ExchangeController::reviewFiles(const std::vector<std::string>& paths)
{
    m_filesToReview.insert(m_filesToReview.end(), paths.begin(), paths.end());
    reviewNextFile();
}

// Pending suggestions go first: they would replace an open review, and are deleted when one closes.
void ExchangeController::reviewNextFile()
{
    while (!m_filesToReview.empty() && !m_importWindowController && !m_untilSuggestions.isActive()) {
        const std::string path = m_filesToReview.front();
        m_filesToReview.pop_front();
        handleFileImport(path);
    }
}

void ExchangeController::offerSuggestions()
{
    if (workflow::areSuggestionsDue(m_store.locations()))
        m_untilSuggestions.start(untilSuggestions);
}

void ExchangeController::handleFailSafeImport()
{
    handleFileImport(m_store.locations().failSafeFile());
}

void ExchangeController::importRule(const rules::RuleRef& rule)
{
    m_import.importRule(rule);
}

bool ExchangeController::didFinishImportingRules()
{
    const workflow::ImportResult result = m_import.didFinishImportingRules();
    Q_EMIT rulesWereReloaded(); // even if there was no rule
    m_application.display(result.notice);
    return !result.writeFailure;
}

bool ExchangeController::isImporting() const
{
    return m_importWindowController && m_importWindowController->isImporting();
}

void ExchangeController::presentRulesDidChange()
{
    if (m_importWindowController)
        m_importWindowController->presentRulesDidChange();
}

} // namespace quorvane::windows
