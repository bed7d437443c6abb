#pragma once

#include "desktop/ApplicationService.h"

#include <chrono>
#include <string>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::windows {
class RulesEditorTableController;
}

namespace quorvane::app {

class AppDelegate;

// How a program that the bus has started behaves.
struct ServedProgram {
    std::string program; // the file of this program, to be started for the preferences
    std::chrono::milliseconds longestUnneeded; // how long a request may take to arrive

    static ServedProgram present();
};

// Handles the desktop's requests over the bus, for a program that the bus has started. The main window stays
// hidden until requested; without any request the program ends. User interface thread only.
class DesktopRequests {
public:
    // All references must outlive this object.
    DesktopRequests(AppDelegate& delegate, windows::RulesEditorTableController& mainWindow,
        platform::Log& log, ServedProgram served = ServedProgram::present());

    // Call it before the event loop runs. If the program cannot register on the bus, shows the main window as
    // if the user had started it.
    void start(const QDBusConnection& bus);

private:
    void showMainWindow();
    void reviewFiles(const std::vector<std::string>& paths);
    void doAction(const QString& action);
    void endUnlessShown();

    AppDelegate& m_delegate;
    windows::RulesEditorTableController& m_mainWindow;
    platform::Log& m_log;
    const ServedProgram m_served;
    desktop::ApplicationService m_service;
};

} // namespace quorvane::app
