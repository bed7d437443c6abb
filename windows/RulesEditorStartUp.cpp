#include "windows/RulesEditorTableController.h"

#include "platform/Log.h"
#include "platform/Relaunch.h"
#include "windows/QtText.h"
#include "workflow/ApplicationServices.h"
#include "workflow/FailSafeSuggestions.h"
#include "workflow/RulesFileProbe.h"

#include <QTimer>

#include <chrono>
#include <utility>

// The main window's start, and what it does when somebody else changes the rules file.

namespace quorvane {

namespace {

constexpr std::chrono::milliseconds untilSuggestions{500};

} // namespace

void RulesEditorTableController::startMonitoring()
{
    m_watcher = std::make_unique<RulesFileWatcher>(m_store.locations().userRulesFile(), m_run, m_log, [this] {
        QMetaObject::invokeMethod(
            this, &RulesEditorTableController::rulesFileDidChange, Qt::QueuedConnection);
    });
}

void RulesEditorTableController::rulesFileDidChange()
{
    // An import is written and read again when it ends; to read now would lose the rules imported so far.
    if (isImporting())
        return;
    m_store.reloadCurrentUserConfiguration();
    m_store.rebuildRulesCache();
    reloadData(RuleIdentity::properties);
}

void RulesEditorTableController::awakeFromNib()
{
    if (!std::exchange(m_initialize, false))
        return;
    const Locations& locations = m_store.locations();
    setWindowTitle(tr("Quorvane Configuration - %1").arg(toQt(locations.userRulesFile())));
    if (const auto notice = rulesFileNotice(locations.userRulesFile())) {
        m_application.displayNotice(notice->header, notice->message, true);
        relaunchAfterDelay(relaunchDelay);
    }
    if (areSuggestionsDue(locations))
        QTimer::singleShot(untilSuggestions, this, &RulesEditorTableController::handleFailSafeImport);
}

void RulesEditorTableController::relaunchAfterDelay(float delay)
{
    if (!quorvane::relaunchAfterDelay(delay))
        m_log.write("could not start the program again");
    m_application.terminate();
}

void RulesEditorTableController::handleFailSafeImport()
{
    handleFileImport(m_store.locations().failSafeFile());
}

} // namespace quorvane
