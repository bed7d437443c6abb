#pragma once

#include "desktop/ApplicationService.h"

#include <QTimer>

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

// What the desktop asks over the bus of a program that the bus has started, brought to its windows. Until it
// is asked for, the main window does not show; a program that nobody asks for anything ends. User interface
// thread only.
class DesktopRequests {
public:
    // All of it must outlive this.
    DesktopRequests(
        AppDelegate& delegate, windows::RulesEditorTableController& mainWindow, platform::Log& log);

    // To be called before the event loop runs. Where the program cannot be known to the bus, it shows the
    // main window as if somebody had started it.
    void start(const QDBusConnection& bus);

private:
    void showMainWindow();
    void reviewFiles(const std::vector<std::string>& paths);
    void doAction(const QString& action);
    void endUnlessShown();

    AppDelegate& m_delegate;
    windows::RulesEditorTableController& m_mainWindow;
    platform::Log& m_log;
    desktop::ApplicationService m_service;
    QTimer m_untilUnneeded;
};

} // namespace quorvane::app
