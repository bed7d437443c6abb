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

// What a version did, ready to be shown.
struct ComparedVersion {
    std::int64_t version = 0;
    std::optional<std::int64_t> since{}; // the version that it is compared with; none for the first of all
    workflow::DifferenceTablePtr table{}; // null with a problem
    QString problem{};
};

// Reads the versions of a file on a thread of its own, so that neither large files nor other programs that
// use the history keep a window waiting. Answers come as signals. For the user interface thread.
class HistoryReader : public QObject {
    Q_OBJECT
public:
    // Must outlive it.
    explicit HistoryReader(const workflow::FileHistory& history);
    // Waits for what is being read at the moment.
    ~HistoryReader() override;

    // Reads the list of versions, if anybody has changed it since it was read last.
    void refresh();
    // Finds what a version did. A later call overtakes earlier ones, which then have no answer.
    void compare(const history::JournalVersion& version);
    // Finds the versions that did something to what contains `text`, newest first. A later call overtakes
    // earlier ones; no text ends the search.
    void search(const QString& text, std::vector<history::JournalVersion> versions);
    // The file's bytes of a version; none when they cannot be read.
    void readBytes(std::int64_t version, std::function<void(const std::optional<std::string>& bytes)> use);
    // Forgets all versions before this one.
    void forgetBefore(std::int64_t version);

Q_SIGNALS:
    // Newest first. `problem` says why there are none to be had; empty when nothing is wrong.
    void versionsRead(const std::vector<quorvane::history::JournalVersion>& versions, const QString& problem);
    void compared(const quorvane::windows::ComparedVersion& difference);
    // `version` did something to what was searched for.
    void found(qint64 version);
    // So many of the versions have been searched.
    void searched(qsizetype count);
    // Why that failed; empty when it did not.
    void forgotten(const QString& problem);

private:
    struct Search;

    history::Journal& journal();
    void readVersions(bool evenIfUnchanged);
    ComparedVersion differenceOf(const history::JournalVersion& version, const std::stop_token& stop);
    void searchOn(const std::shared_ptr<Search>& search);

    const workflow::FileHistory& m_history;
    std::unique_ptr<history::Journal> m_journal; // the thread's
    std::optional<std::int64_t> m_changeMark; // the thread's; as the versions were read last
    std::stop_source m_comparing;
    std::stop_source m_searching;
    bool m_isRefreshing = false;
    BackgroundThread m_thread; // goes first
};

} // namespace quorvane::windows
