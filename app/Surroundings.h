#pragma once

#include "app/AppDelegate.h"
#include "desktop/DesktopAuthority.h"
#include "desktop/DesktopNotices.h"
#include "desktop/EndRequests.h"
#include "desktop/PkexecCommand.h"
#include "desktop/Workspace.h"
#include "platform/RunningApplications.h"
#include "windows/AuthenticationWindow.h"
#include "windows/BackgroundThread.h"
#include "workflow/PreferencesHistory.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <memory>
#include <string>

namespace quorvane::app {

// Creates the process-wide store on another thread. Handles events meanwhile and, when it takes long, shows a
// window that says so. False when the end of the program was requested in the meantime; the other thread then
// goes on using the arguments.
bool loadStore(
    const platform::Locations& locations, platform::Log& log, const desktop::EndRequests& endRequests);

// Creates and owns everything that the windows depend on. Must outlive them; create one per process, after
// QApplication. User interface thread only.
struct Surroundings {
    // `log` must outlive it.
    Surroundings(const platform::Locations& locations, platform::Log& log, bool openedWithOptions);

    platform::Log& log;
    workflow::RunState run;
    workflow::ReadProgramSettings settings; // as read at the start
    rules::RuleManager& store;
    windows::BackgroundThread background;
    workflow::RulesDocument document;
    desktop::Workspace workspace;
    desktop::DesktopNotices notices;
    windows::AuthenticationWindow prompt;
    desktop::DesktopAuthority authority;
    desktop::PkexecCommand privilegedCommand;
    std::unique_ptr<platform::RunningApplications> runningApplications;
    AppDelegate delegate;
    workflow::PreferencesHistory preferencesHistory;
};

// The volume of the machine that the rules are for, by the environment variable QUORVANE_TARGET; empty for
// this machine.
std::string volumeFromEnvironment();

} // namespace quorvane::app
