#include "app/Surroundings.h"

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
}

} // namespace quorvane
