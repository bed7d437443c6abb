#pragma once

#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "workflow/PreferenceValues.h"

#include <QDialog>

#include <memory>
#include <vector>

class QCheckBox;
class QLabel;

namespace Ui {
class QVPreferencesWindow;
}

namespace quorvane::platform {
class Log;
class PrivilegedCommand;
} // namespace quorvane::platform

namespace quorvane::workflow {
class ApplicationServices;
class PreferencesHistory;
struct RunState;
} // namespace quorvane::workflow

namespace quorvane::app {

// The window for the settings shared by all users. An authenticated administrator can change them, others can
// only view them. Deletes itself when it is closed. User interface thread only.
class QVPreferencesWindow : public QDialog {
    Q_OBJECT
public:
    // Owns no argument; all references must outlive the window.
    QVPreferencesWindow(platform::Locations locations, workflow::ApplicationServices& application,
        workflow::RunState& run, platform::PrivilegedCommand& privilegedCommand,
        workflow::PreferencesHistory& history, platform::Log& log);
    ~QVPreferencesWindow() override;

    // Fills the window and asks an administrator to authenticate. Call it before the window is shown; returns
    // when the user has answered.
    void windowDidLoad();
    void setTheme();

    // Whether users other than administrators may write to the shared rules folder. Logs its permissions.
    static bool canCreateRules(const platform::Locations& locations, platform::Log& log);
    // Sets the permission of the rules folder to the shown value, if that has changed since it was loaded.
    void setFolderPermissions();

public Q_SLOTS:
    void clickedCreateRules();
    // Saves, if that is allowed, and closes.
    void clickedOK();
    // Closes without saving.
    void reject() override;

Q_SIGNALS:
    // The window has tried to save. `failure` says why that failed; empty on success.
    void saved(const QString& failure);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    struct Switch {
        QCheckBox* box;
        QLabel* help;
        bool workflow::PreferenceValues::*value;
    };

    void setUpSwitches();
    void showValues(const workflow::PreferenceValues& values);
    workflow::PreferenceValues shownValues() const;
    void makeReadOnly();
    void warnOfFile();
    void warn(const QString& text);
    void windowWillClose();

    const platform::Locations m_locations;
    workflow::ApplicationServices& m_application;
    workflow::RunState& m_run;
    platform::PrivilegedCommand& m_privilegedCommand;
    workflow::PreferencesHistory& m_history;
    platform::Log& m_log;
    std::unique_ptr<Ui::QVPreferencesWindow> m_ui;
    std::vector<Switch> m_switches;
    platform::PropertyList m_settings;
    bool m_initialPermissions = false;
    bool m_authenticated = false;
};

} // namespace quorvane::app
