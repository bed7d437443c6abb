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

// The versions of the user's rules, and of other files: when, by which program and what was done, and for the
// selected version what it changed. Versions can be brought back, exported and forgotten. New ones show up
// while the window is open. Deletes itself when it is closed.
class HistoryWindow : public QDialog {
    Q_OBJECT
public:
    // At least one; the first is shown. All must outlive the window.
    explicit HistoryWindow(std::vector<workflow::FileHistory*> histories, QWidget* parent = nullptr);
    ~HistoryWindow() override;

    // Selects the first version of the first history from this number on, as soon as there is one.
    void showVersionFrom(std::int64_t number);

public Q_SLOTS:
    void restoreVersion();
    void exportVersion();
    void forgetVersions();
    // Looks for new versions.
    void refresh();

Q_SIGNALS:
    void wasRestored();
    void undoRequested();
    // What the selected version changed is shown, or that there is no version.
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
    void tell(const QString& text);

    std::unique_ptr<Ui::HistoryWindow> m_ui;
    const std::vector<workflow::FileHistory*> m_histories;
    VersionsModel* m_versions; // owned by this window, as is the next
    DifferenceModel* m_changes;
    std::unique_ptr<HistoryReader> m_reader; // of the history that is shown
    std::optional<std::int64_t> m_selected; // a version's number
    std::optional<std::int64_t> m_wanted; // the first one from here on is to be selected when it is there
    std::size_t m_searched = 0;
    bool m_isRead = false; // the versions of the present history are there
    QTimer m_refreshing;
};

} // namespace quorvane::windows
