#pragma once

#include "history/JournalVersion.h"
#include "windows/BackgroundThread.h"
#include "workflow/FileHistory.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace quorvane::history {
class Journal;
}

namespace quorvane::windows {

// The changes of a version, ready for display.
struct ComparedVersion {
    std::int64_t version = 0;
    std::optional<std::int64_t> since{}; // the version that it is compared with; none for the first of all
    workflow::DifferenceTablePtr table{}; // null if there is a problem
    QString problem{};
};

// Reads the versions of a file on its own thread, so that neither large files nor other programs that use the
// history block a window. Results arrive as signals. For use by the user interface thread.
class HistoryReader : public QObject {
    Q_OBJECT
public:
    // Must outlive it.
    explicit HistoryReader(const workflow::FileHistory& history);
    // Waits for the read in progress.
    ~HistoryReader() override;

    // Reads the list of versions if it has changed since the last read.
    void refresh();
    // Computes the changes of a version. A later call cancels earlier ones, which then yield no result.
    void compare(const history::JournalVersion& version);
    // Finds the versions whose changes contain `text`, newest first. A later call cancels earlier ones; an
    // empty text ends the search.
    void search(const QString& text, std::vector<history::JournalVersion> versions);
    // The file's bytes of a version; none when they cannot be read.
    void readBytes(std::int64_t version, std::function<void(const std::optional<std::string>& bytes)> use);
    // Forgets all versions before this one.
    void forgetBefore(std::int64_t version);

Q_SIGNALS:
    // Newest first. `problem` says why they cannot be read; empty when they can.
    void versionsRead(const std::vector<quorvane::history::JournalVersion>& versions, const QString& problem);
    void compared(const quorvane::windows::ComparedVersion& difference);
    // The changes of `version` contain the search text.
    void found(qint64 version);
    // Progress: so many of the versions have been searched.
    void searched(qsizetype count);
    // `problem` says why forgetBefore() failed; empty when it did not.
    void forgotten(const QString& problem);

private:
    struct Search;

    history::Journal& journal();
    void readVersions(bool evenIfUnchanged);
    ComparedVersion differenceOf(const history::JournalVersion& version, const std::stop_token& stop);
    void searchOn(const std::shared_ptr<Search>& search);

    const workflow::FileHistory& m_history;
    std::unique_ptr<history::Journal> m_journal; // used by the thread
    std::optional<std::int64_t> m_changeMark; // used by the thread; as of the last read of the versions
    std::stop_source m_comparing;
    std::stop_source m_searching;
    bool m_isRefreshing = false;
    BackgroundThread m_thread; // destroyed first
};

} // namespace quorvane::windows
