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

namespace quorvane::app {

// What the windows need, put together; outlives them. After QApplication, once in a process.
struct Surroundings {
    // `log` must outlive it.
    Surroundings(const platform::Locations& locations, platform::Log& log, bool openedWithOptions);

    platform::Log& log;
    workflow::RunState run;
    workflow::ReadProgramSettings settings; // as they were at the start
    rules::RuleManager& store;
    windows::BackgroundThread background;
    workflow::RulesDocument document;
    platform::Workspace workspace;
    platform::DesktopNotices notices;
    windows::AuthenticationWindow prompt;
    platform::DesktopAuthority authority;
    platform::PkexecCommand privilegedCommand;
    std::unique_ptr<platform::RunningApplications> runningApplications;
    AppDelegate delegate;
    workflow::PreferencesHistory preferencesHistory;
};

// The volume of the machine that the rules are for, by the environment variable QUORVANE_TARGET; empty for
// this machine.
std::string volumeFromEnvironment();

} // namespace quorvane::app
