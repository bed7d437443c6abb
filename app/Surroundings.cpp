#include "app/Surroundings.h"

#include "app/QVPreferencesWindow.h"
#include "windows/QtText.h"

namespace quorvane {

Surroundings::Surroundings(const Locations& locations, Log& givenLog, bool openedWithOptions)
    : log(givenLog)
    , run{.openedWithOptions = openedWithOptions}
    , store(RuleManager::sharedManager(locations, log))
    , notices(QDBusConnection::sessionBus())
    , prompt(toQt(locations.noticeIconFile()))
    , authority(systemBusAddress(locations.areSandbox()), prompt)
    , runningApplications(makeRunningApplications())
    , delegate(locations, log, run, {notices, authority, *runningApplications, workspace})
{
    delegate.setPreferencesOpener([this, locations] {
        auto* window = new QVPreferencesWindow(locations, delegate, run, privilegedCommand, log);
        QObject::connect(window, &QVPreferencesWindow::saved, &delegate, &AppDelegate::preferencesWereSaved);
        window->windowDidLoad();
        return window;
    });
}

} // namespace quorvane
