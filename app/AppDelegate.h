#pragma once

#include "platform/Locations.h"
#include "rules/RuleManager.h"
#include "workflow/ApplicationServices.h"

#include <QObject>

#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::platform {
class AdminAuthority;
class Log;
class Notices;
class RunningApplications;
} // namespace quorvane::platform

namespace quorvane::workflow {
struct RunState;
}

namespace quorvane::app {

// The services of desktop and system that the delegate uses.
struct DelegateServices {
    platform::Notices& notices;
    platform::AdminAuthority& authority;
    platform::RunningApplications& applications;
    desktop::Workspace& workspace;
};

// The root of the application: handles its start and end, and implements the services for every window. User
// interface thread only.
class AppDelegate : public QObject, public workflow::ApplicationServices {
    Q_OBJECT
public:
    // All references must outlive it.
    AppDelegate(platform::Locations locations, platform::Log& log, const workflow::RunState& run,
        DelegateServices services);

    // Sets the function that creates a preferences window, which may block until the user has authenticated.
    // Call it before the preferences can be requested.
    void setPreferencesOpener(std::function<QWidget*()> openPreferencesWindow);

    // Who started the program: the user, or the session bus, which will then send a request.
    enum class StartedBy { person, bus };

    // Call it from the event loop: an authentication can request the end of the program.
    //
    // Reports a configuration that failed to load. Then, for every argument that is exactly "-preferences",
    // closes `mainWindow` and shows the preferences; without such an argument shows `mainWindow`, unless the
    // bus started the program. If the end was requested already, ends the program and shows nothing.
    void applicationDidFinishLaunching(const rules::RuleManager& store, QWidget& mainWindow,
        const std::vector<std::string>& arguments, StartedBy starter = StartedBy::person);

    // Call it when the event loop has ended: reloads the agents, and waits for notices still being sent.
    void applicationWillTerminate();

    // Makes every agent reload the configuration if it was changed in this run. A second call does nothing.
    // Needs no event loop.
    void reloadAgentsAfterChange();

    // Interrupts only the first of the running agents. Nothing calls this; agents are notified at the end.
    void reloadAgent();

    bool performTouchIDAuthentication();
    void setShowPreferences(bool showPreferences) { m_showPreferences = showPreferences; }

    void displayNotice(const std::string& header, const std::string& message, bool waitForResponse) override;
    bool isAdminUser() override;
    bool performAuthentication() override;
    bool showPreferences() const override { return m_showPreferences; }
    void showPreferencesWindow() override;
    void showHelp() override;
    void terminate() override;
    bool isTerminating() const override { return m_terminating; }

Q_SIGNALS:
    // A preferences window has tried to save. `failure` says why that failed; empty on success.
    void preferencesWereSaved(const QString& failure);

private:
    void reloadAllAgents();
    void adopt(QWidget& window);

    const platform::Locations m_locations;
    platform::Log& m_log;
    const workflow::RunState& m_run;
    const DelegateServices m_services;
    std::function<QWidget*()> m_openPreferencesWindow;
    bool m_showPreferences = false;
    bool m_terminating = false;
    bool m_ended = false; // the event loop has ended
    bool m_agentsReloaded = false;
};

} // namespace quorvane::app
