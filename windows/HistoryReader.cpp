#include "windows/HistoryReader.h"

#include "history/Journal.h"
#include "platform/Unicode.h"
#include "windows/QtText.h"
#include "workflow/VersionChanges.h"

#include <QThreadPool>

#include <chrono>
#include <new>
#include <utility>

namespace quorvane::windows {

namespace {

QString problemOf(const history::Journal& journal)
{
    return toQt(journal.problem().value_or(std::string()));
}

// The same table, destroyed on another thread: its last owner, usually a window, need not wait until a
// million rules are freed.
workflow::DifferenceTablePtr endingElsewhere(workflow::DifferenceTablePtr table)
{
    const workflow::DifferenceTable* const shown = table.get();
    return {shown, [table = std::move(table)](const workflow::DifferenceTable* /*shown*/) mutable {
                QThreadPool::globalInstance()->start([last = std::move(table)] {});
            }};
}

} // namespace

struct HistoryReader::Search {
    std::string key;
    std::vector<history::JournalVersion> versions;
    std::stop_token stop;
    std::size_t next = 0;
};

HistoryReader::HistoryReader(const workflow::FileHistory& history)
    : m_history(history)
{
}

HistoryReader::~HistoryReader()
{
    m_comparing.request_stop();
    m_searching.request_stop();
}

history::Journal& HistoryReader::journal()
{
    if (!m_journal)
        m_journal = m_history.openJournal();
    return *m_journal;
}

void HistoryReader::refresh()
{
    if (!std::exchange(m_isRefreshing, true))
        readVersions(false);
}

void HistoryReader::readVersions(bool evenIfUnchanged)
{
    auto versions = std::make_shared<std::optional<std::vector<history::JournalVersion>>>();
    auto problem = std::make_shared<QString>();
    m_thread.run(
        [this, versions, problem, evenIfUnchanged] {
            const std::int64_t mark = journal().changeMark();
            *problem = problemOf(journal());
            if (!evenIfUnchanged && mark == m_changeMark)
                return;
            *versions = journal().versions();
            *problem = problemOf(journal());
            m_changeMark = mark;
        },
        [this, versions, problem] {
            m_isRefreshing = false;
            if (*versions)
                Q_EMIT versionsRead(**versions, *problem);
        });
}

ComparedVersion HistoryReader::differenceOf(
    const history::JournalVersion& version, const std::stop_token& stop)
{
    ComparedVersion difference{.version = version.number};
    try {
        const workflow::VersionChanges changes = workflow::changesOf(journal(), version);
        difference.since = changes.since;
        difference.problem = toQt(changes.problem.value_or(std::string()));
        if (!changes.problem && !stop.stop_requested())
            difference.table = endingElsewhere(m_history.compare(changes.before, changes.after, stop));
    } catch (const std::bad_alloc&) {
        difference.problem = tr("There is not enough memory to compare these versions.");
    }
    return difference;
}

void HistoryReader::compare(const history::JournalVersion& version)
{
    m_comparing.request_stop();
    m_comparing = {};
    auto difference = std::make_shared<ComparedVersion>();
    m_thread.run(
        [this, version, difference, stop = m_comparing.get_token()] {
            if (!stop.stop_requested())
                *difference = differenceOf(version, stop);
        },
        [this, difference, stop = m_comparing.get_token()] {
            if (!stop.stop_requested())
                Q_EMIT compared(*difference);
        });
}

void HistoryReader::search(const QString& text, std::vector<history::JournalVersion> versions)
{
    m_searching.request_stop();
    m_searching = {};
    if (text.isEmpty())
        return;
    searchOn(std::make_shared<Search>(
        Search{platform::searchKey(fromQt(text)), std::move(versions), m_searching.get_token()}));
}

// A few versions at a time, so that other requests of the user in between need not wait for all.
void HistoryReader::searchOn(const std::shared_ptr<Search>& search)
{
    auto hits = std::make_shared<std::vector<std::int64_t>>();
    m_thread.run(
        [this, search, hits] {
            constexpr std::chrono::milliseconds atATime{50};
            const auto end = std::chrono::steady_clock::now() + atATime;
            do {
                if (search->stop.stop_requested() || search->next == search->versions.size())
                    return;
                const history::JournalVersion& version = search->versions[search->next++];
                const workflow::DifferenceTablePtr table = differenceOf(version, search->stop).table;
                if (table && table->contains(search->key))
                    hits->push_back(version.number);
            } while (std::chrono::steady_clock::now() < end);
        },
        [this, search, hits] {
            if (search->stop.stop_requested())
                return;
            for (const std::int64_t version : *hits)
                Q_EMIT found(version);
            Q_EMIT searched(static_cast<qsizetype>(search->next));
            if (search->next < search->versions.size())
                searchOn(search);
        });
}

void HistoryReader::readBytes(
    std::int64_t version, std::function<void(const std::optional<std::string>& bytes)> use)
{
    auto bytes = std::make_shared<std::optional<std::string>>();
    m_thread.run([this, version, bytes] { *bytes = journal().bytesOf(version); },
        [bytes, use = std::move(use)] { use(*bytes); });
}

void HistoryReader::forgetBefore(std::int64_t version)
{
    auto problem = std::make_shared<QString>();
    m_thread.run(
        [this, version, problem] {
            journal().forgetBefore(version);
            *problem = problemOf(journal());
        },
        [this, problem] { Q_EMIT forgotten(*problem); });
    readVersions(true);
}

} // namespace quorvane::windows
