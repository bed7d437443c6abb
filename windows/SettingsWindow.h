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

// The settings of the programs themselves, which window and command line share. Deletes itself when it is
// closed.
class SettingsWindow : public QDialog {
    Q_OBJECT
public:
    // Of the settings file at that path, which is read now. What cannot be used of it is told.
    explicit SettingsWindow(std::string file, QWidget* parent = nullptr);
    ~SettingsWindow() override;

public Q_SLOTS:
    // Closes when the settings are in the file, and says why when they are not.
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
