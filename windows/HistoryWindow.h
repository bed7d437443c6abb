#pragma once

#include "windows/HistoryReader.h"

#include <QDialog>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Ui {
class HistoryWindow;
}

namespace quorvane::workflow {
class FileHistory;
}

namespace quorvane::windows {

class DifferenceModel;
class VersionsModel;

// The versions of the user's rules, and of other files: time, program and action, and the changes of the
// selected version. Versions can be restored, exported and forgotten. New ones appear while the window is
// open. Deletes itself when it is closed. User interface thread only.
class HistoryWindow : public QDialog {
    Q_OBJECT
public:
    // Requires at least one; the first is shown. All must outlive the window.
    explicit HistoryWindow(std::vector<workflow::FileHistory*> histories, QWidget* parent = nullptr);
    ~HistoryWindow() override;

    // Selects the first version of the first history from this number on, as soon as it exists.
    void showVersionFrom(std::int64_t number);

public Q_SLOTS:
    void restoreVersion();
    void exportVersion();
    void forgetVersions();
    // Checks for new versions.
    void refresh();

Q_SIGNALS:
    void wasRestored();
    void undoRequested();
    // The changes of the selected version are shown, or that there is no version.
    void wasFilled();

private:
    void setUpTables();
    void setUpControls();
    workflow::FileHistory& history() const;
    void openHistory();
    const history::JournalVersion* selectedVersion() const;
    void selectVersion(std::optional<std::int64_t> number);
    std::optional<std::int64_t> wantedVersion() const;
    void versionsDidChange(const std::vector<history::JournalVersion>& versions, const QString& problem);
    void selectionDidChange();
    void showDifference(const ComparedVersion& difference);
    void searchDidChange();
    void searchAgain();
    void updateCounts();
    void copyChanges() const;
    void save(const std::string& path, std::int64_t version);
    void showMessage(const QString& text);

    std::unique_ptr<Ui::HistoryWindow> m_ui;
    const std::vector<workflow::FileHistory*> m_histories;
    VersionsModel* m_versions; // owned by this window, like the next
    DifferenceModel* m_changes;
    std::unique_ptr<HistoryReader> m_reader; // of the shown history
    std::optional<std::int64_t> m_selected; // a version's number
    std::optional<std::int64_t> m_wanted; // the first one from this number on will be selected when it exists
    std::size_t m_searched = 0;
    bool m_isRead = false; // the versions of the shown history have been read
    QTimer m_refreshing;
};

} // namespace quorvane::windows
