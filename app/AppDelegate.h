#pragma once

#include "platform/Locations.h"
#include "rules/RuleManager.h"
#include "workflow/ApplicationServices.h"

#include <QObject>
#include <QPointer>

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

// What the delegate asks of the desktop and the system.
struct DelegateServices {
    platform::Notices& notices;
    platform::AdminAuthority& authority;
    platform::RunningApplications& applications;
    desktop::Workspace& workspace;
};

// The root of the application: what happens at its start and its end, and what it does for every window.
// User interface thread only.
class AppDelegate : public QObject, public workflow::ApplicationServices {
    Q_OBJECT
public:
    // What is given by reference must outlive it.
    AppDelegate(platform::Locations locations, platform::Log& log, const workflow::RunState& run,
        DelegateServices services);

    // How a preferences window is made, which may take as long as a person needs to authenticate. To be set
    // before the preferences are asked for.
    void setPreferencesOpener(std::function<QWidget*()> openPreferencesWindow);

    // Who has started the program: a person, or the session bus, which is about to say what for.
    enum class StartedBy { person, bus };

    // To be called when the event loop runs: an authentication can ask for the end of the program.
    //
    // Tells of a configuration that failed to load. Then, for every argument that is "-preferences" exactly,
    // closes `mainWindow` and shows the preferences; without such an argument shows `mainWindow`, unless the
    // bus has started the program. Where the end has been asked for already, sees to it and shows nothing.
    void applicationDidFinishLaunching(const rules::RuleManager& store, QWidget& mainWindow,
        const std::vector<std::string>& arguments, StartedBy starter = StartedBy::person);

    // Shows the window, above others and with the keyboard.
    static void bringToFront(QWidget& window);

    // To be called when the event loop has ended: reloads the agents, and hands over notices that are still
    // on their way.
    void applicationWillTerminate();

    // Has every agent read the configuration again, if it was changed in this run. Once: a second call does
    // nothing. Needs no event loop.
    void reloadAgentsAfterChange();

    // Interrupts the first of the running agents, and only it. Nothing calls this; agents are told at the
    // end.
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
    // A preferences window has tried to save. `failure` says why the settings are not in the file; empty when
    // they are.
    void preferencesWereSaved(const QString& failure);

private:
    void reloadAllAgents();
    void adopt(QWidget& window);

    const platform::Locations m_locations;
    platform::Log& m_log;
    const workflow::RunState& m_run;
    const DelegateServices m_services;
    std::function<QWidget*()> m_openPreferencesWindow;
    QPointer<QWidget> m_preferencesWindow; // the last one shown
    bool m_showPreferences = false;
    bool m_terminating = false;
    bool m_ended = false; // the event loop has
    bool m_agentsReloaded = false;
};

} // namespace quorvane::app
