#include "app/Surroundings.h"

#include "app/QVPreferencesWindow.h"
#include "history/JournalPlace.h"
#include "platform/Log.h"
#include "windows/QtText.h"

#include <cstdlib>

namespace quorvane {

namespace {

constexpr const char* programName = "quorvane-configuration"; // in the history

ReadProgramSettings readSettings(Log& log)
{
    ReadProgramSettings read = readProgramSettings(defaultSettingsFile());
    if (read.problem)
        log.write(*read.problem);
    return read;
}

} // namespace

Surroundings::Surroundings(const Locations& locations, Log& givenLog, bool openedWithOptions)
    : log(givenLog)
    , run{.openedWithOptions = openedWithOptions}
    , settings(readSettings(log))
    , store(RuleManager::sharedManager(locations, log))
    , document(store, run,
          {.program = programName,
              .stateFolder = defaultStateFolder(),
              .settings = settings.settings,
              .background = &background},
          log)
    , notices(QDBusConnection::sessionBus())
    , prompt(toQt(locations.noticeIconFile()))
    , authority(systemBusAddress(locations.areSandbox()), prompt)
    , runningApplications(makeRunningApplications())
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

} // namespace quorvane
