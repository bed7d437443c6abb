#pragma once

#include "app/AppDelegate.h"
#include "platform/DesktopAuthority.h"
#include "platform/DesktopNotices.h"
#include "platform/PkexecCommand.h"
#include "platform/RunningApplications.h"
#include "platform/Workspace.h"
#include "windows/AuthenticationWindow.h"
#include "windows/BackgroundThread.h"
#include "workflow/PreferencesHistory.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <memory>
#include <string>

namespace quorvane {

// What the windows need, put together; outlives them. After QApplication, once in a process.
struct Surroundings {
    // `log` must outlive it.
    Surroundings(const Locations& locations, Log& log, bool openedWithOptions);

    Log& log;
    RunState run;
    ReadProgramSettings settings; // as they were at the start
    RuleManager& store;
    BackgroundThread background;
    RulesDocument document;
    Workspace workspace;
    DesktopNotices notices;
    AuthenticationWindow prompt;
    DesktopAuthority authority;
    PkexecCommand privilegedCommand;
    std::unique_ptr<RunningApplications> runningApplications;
    AppDelegate delegate;
    PreferencesHistory preferencesHistory;
};

// The volume of the machine that the rules are for, by the environment variable QUORVANE_TARGET; empty for
// this machine.
std::string volumeFromEnvironment();

} // namespace quorvane
