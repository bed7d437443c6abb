#include "app/Surroundings.h"

#include "app/QVPreferencesWindow.h"
#include "history/JournalPlace.h"
#include "platform/Log.h"
#include "windows/LoadingWindow.h"
#include "windows/QtText.h"

#include <QCoreApplication>

#include <cstdlib>
#include <new>

namespace quorvane::app {

namespace {

constexpr const char* programName = "quorvane-configuration"; // in the history

workflow::ReadProgramSettings readSettings(platform::Log& log)
{
    workflow::ReadProgramSettings read = workflow::readProgramSettings(workflow::defaultSettingsFile());
    if (read.problem)
        log.write(*read.problem);
    return read;
}

// The first snapshot of the rules visits all of them, too, and so does the first search for a covering rule.
void load(const platform::Locations& locations, platform::Log& log)
{
    try {
        const rules::RuleManager& store = rules::RuleManager::sharedManager(locations, log);
        store.userRulesSnapshot();
        store.indexLargeGroups();
    } catch (const std::bad_alloc&) {
        return; // made when needed, or the failure is reported then
    }
}

} // namespace

bool loadStore(
    const platform::Locations& locations, platform::Log& log, const desktop::EndRequests& endRequests)
{
    windows::LoadingWindow window(windows::toQt(locations.noticeIconFile()),
        QCoreApplication::applicationName(),
        QCoreApplication::translate("quorvane::app::Surroundings", "Reading the rules…"));
    QObject::connect(
        &endRequests, &desktop::EndRequests::endRequested, &window, &windows::LoadingWindow::reject);
    return window.run([&] { load(locations, log); });
}

Surroundings::Surroundings(
    const platform::Locations& locations, platform::Log& givenLog, bool openedWithOptions)
    : log(givenLog)
    , run{.openedWithOptions = openedWithOptions}
    , settings(readSettings(log))
    , store(rules::RuleManager::sharedManager(locations, log))
    , document(store, run,
          {.program = programName,
              .stateFolder = history::defaultStateFolder(),
              .settings = settings.settings,
              .background = &background},
          log)
    , notices(QDBusConnection::sessionBus())
    , prompt(windows::toQt(locations.noticeIconFile()))
    , authority(desktop::systemBusAddress(locations.areSandbox()), prompt)
    , runningApplications(platform::makeRunningApplications())
    , delegate(locations, log, run, {notices, authority, *runningApplications, workspace})
    , preferencesHistory(locations, document, programName, {delegate, privilegedCommand, run}, log)
{
    delegate.setPreferencesOpener([this, locations] {
        auto* window
            = new QVPreferencesWindow(locations, delegate, run, privilegedCommand, preferencesHistory, log);
        QObject::connect(window, &QVPreferencesWindow::saved, &delegate, &AppDelegate::preferencesWereSaved);
        window->windowDidLoad();
        return window;
    });
}

std::string volumeFromEnvironment()
{
    const char* volume = std::getenv("QUORVANE_TARGET");
    return volume == nullptr ? "" : volume;
}

} // namespace quorvane::app
