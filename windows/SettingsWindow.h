#pragma once

#include "workflow/ProgramSettings.h"

#include <QDialog>

#include <memory>
#include <string>

class QLabel;

namespace Ui {
class SettingsWindow;
}

namespace quorvane::windows {

// The settings of our own programs, shared by window and command line. Deletes itself when it is closed. User
// interface thread only.
class SettingsWindow : public QDialog {
    Q_OBJECT
public:
    // Reads the settings file at that path and reports the parts that cannot be used.
    explicit SettingsWindow(std::string file, QWidget* parent = nullptr);
    ~SettingsWindow() override;

public Q_SLOTS:
    // Writes the settings and closes; after a failure stays open and says why.
    void save();

Q_SIGNALS:
    void saved(const quorvane::workflow::ProgramSettings& settings);

private:
    void showProblem(const QString& problem);
    workflow::ProgramSettings shownSettings() const;

    const std::string m_file;
    std::unique_ptr<Ui::SettingsWindow> m_ui;
    workflow::ProgramSettings m_settings; // of the file
};

} // namespace quorvane::windows
