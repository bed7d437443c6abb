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

namespace quorvane {

class ApplicationServices;
class Log;
class PreferencesHistory;
class PrivilegedCommand;
struct RunState;

// The window on the settings that all users share. An administrator who has authenticated can change them,
// anybody else can look at them. Deletes itself when it is closed.
class QVPreferencesWindow : public QDialog {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the window.
    QVPreferencesWindow(Locations locations, ApplicationServices& application, RunState& run,
        PrivilegedCommand& privilegedCommand, PreferencesHistory& history, Log& log);
    ~QVPreferencesWindow() override;

    // Fills the window and has an administrator authenticate. To be called before the window is shown;
    // returns when the person has answered.
    void windowDidLoad();
    void setTheme();

    // Whether others than administrators may write to the shared rules folder. Logs its permissions.
    static bool canCreateRules(const Locations& locations, Log& log);
    // Asks for the permission of the rules folder that the window shows, if it is another than when it was
    // loaded.
    void setFolderPermissions();

public Q_SLOTS:
    void clickedCreateRules();
    // Saves, if that is allowed, and closes.
    void clickedOK();
    // Closes without saving.
    void reject() override;

Q_SIGNALS:
    // The window has tried to save. `failure` says why the settings are not in the file; empty when they are.
    void saved(const QString& failure);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    struct Switch {
        QCheckBox* box;
        QLabel* help;
        bool PreferenceValues::*value;
    };

    void setUpSwitches();
    void showValues(const PreferenceValues& values);
    PreferenceValues shownValues() const;
    void makeReadOnly();
    void warnOfFile();
    void warn(const QString& text);
    void windowWillClose();

    const Locations m_locations;
    ApplicationServices& m_application;
    RunState& m_run;
    PrivilegedCommand& m_privilegedCommand;
    PreferencesHistory& m_history;
    Log& m_log;
    std::unique_ptr<Ui::QVPreferencesWindow> m_ui;
    std::vector<Switch> m_switches;
    PropertyList m_settings;
    bool m_initialPermissions = false;
    bool m_authenticated = false;
};

} // namespace quorvane
