#include "history/Journal.h"

#include "history/ContentDigest.h"
#include "history/ContentStore.h"
#include "history/ContentSweep.h"
#include "history/Database.h"
#include "history/Thinning.h"
#include "history/UndoOrder.h"
#include "history/VersionFrame.h"
#include "history/VersionTable.h"

#include "platform/Log.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <new>
#include <utility>

namespace quorvane::history {

namespace {

constexpr std::int64_t format = 1;
constexpr std::chrono::milliseconds shortWait{100};
constexpr std::int64_t largestFormat
    = 1000; // no version of ours uses a higher number, so the file is damaged

// The format number of an open database; 0 for an empty one.
std::int64_t formatOf(Database& database)
{
    Statement row(
        database, "SELECT user_version, (SELECT count(*) FROM sqlite_schema) FROM pragma_user_version");
    row.step();
    const std::int64_t found = row.integer(0);
    if (found < 0 || found > largestFormat || (found == 0 && row.integer(1) != 0))
        throw DatabaseError::damage("no format number");
    return found;
}

// Writing does not always notice damaged database pages. Checking a small journal takes no longer than
// writing a version.
void checkPages(Database& database, std::uint64_t size)
{
    constexpr std::uint64_t small = std::uint64_t{4} << 20U; // bytes
    if (size > small)
        return;
    Statement row(database, "PRAGMA quick_check(1)");
    if (!row.step() || row.text(0) != "ok")
        throw DatabaseError::damage("its pages do not fit together");
}

// Another process may be doing the same.
void createTables(Database& database, const std::string& watchedFile)
{
    database.execute("PRAGMA auto_vacuum = FULL"); // the file shrinks with its contents
    Transaction transaction(database, Transaction::Kind::write);
    if (formatOf(database) != 0)
        return;
    ContentStore::createTable(database);
    VersionTable::createTable(database);
    database.execute("CREATE TABLE file (path TEXT NOT NULL)"); // for anyone who inspects the folder
    Statement(database, "INSERT INTO file VALUES (?)", watchedFile).run();
    database.execute(("PRAGMA user_version = " + std::to_string(format)).c_str());
    transaction.commit();
}

} // namespace

std::unique_ptr<Journal> Journal::open(const std::string& stateFolder, const std::string& watchedFile,
    const JournalLimits& limits, platform::Log& log)
{
    return std::unique_ptr<Journal>(new Journal(JournalPlace(stateFolder, watchedFile), limits, log));
}

Journal::Journal(JournalPlace place, const JournalLimits& limits, platform::Log& log)
    : m_place(std::move(place))
    , m_limits(limits)
    , m_log(log)
{
}

Journal::~Journal() = default;

bool Journal::mayBeUnderWay(const std::string& stateFolder, const std::string& watchedFile)
{
    return JournalPlace(stateFolder, watchedFile).hasMarker();
}

std::optional<std::string> Journal::takeNotice()
{
    return std::exchange(m_notice, std::nullopt);
}

template <typename Work> auto Journal::attempt(Access access, Work work)
{
    using Answer = decltype(work(*m_database));
    m_problem.reset();
    bool wasReadAgain = false; // after damage
    for (int failures = 0;; ++failures) {
        try {
            Answer answer = openDatabase(access) ? work(*m_database) : Answer{};
            if (m_database && std::exchange(m_hasWaitedInVain, false))
                m_database.reset(); // the next one waits as long as usual
            return answer;
        } catch (const DatabaseError& error) {
            if (!recoverFrom(error, failures, wasReadAgain)) {
                fail(error.what());
                return Answer{};
            }
        } catch (const std::bad_alloc&) {
            fail("there is not enough memory");
            return Answer{};
        }
    }
}

// Creates nothing for a reader: then there is no journal yet.
bool Journal::openDatabase(Access access)
{
    if (isOpenDatabaseInPlace())
        return true;
    m_database.reset();
    std::optional<std::string> reason = m_place.refusal();
    if (!reason && !m_place.hasDatabase()) {
        if (access == Access::read)
            return false;
        reason = m_place.prepare();
    }
    if (reason) {
        fail(reason->c_str());
        return false;
    }
    m_file = m_place.databaseIdentity();
    auto database = std::make_unique<Database>(
        m_place.databaseFile(), m_hasWaitedInVain ? shortWait : Database::usualWait);
    const std::int64_t found = formatOf(*database);
    if (found > format) {
        fail("it was made by a newer version of this program");
        return false;
    }
    if (found == 0 && access == Access::read)
        return false;
    if (found == 0)
        createTables(*database, m_place.watchedFile());
    checkPages(*database, m_place.sizeOnDisk());
    m_database = std::move(database);
    ++m_openings;
    return true;
}

// A database that another process has renamed or removed can still be read. No other file has its inode
// number while it is open.
bool Journal::isOpenDatabaseInPlace() const
{
    return m_database && m_place.databaseIdentity().isSameFileAs(m_file);
}

// True when there is a database to retry with.
bool Journal::recoverFrom(const DatabaseError& error, int earlierFailures, bool& wasReadAgain)
{
    constexpr int mostFailures = 2;
    m_database.reset();
    m_hasWaitedInVain = m_hasWaitedInVain || error.isBusy();
    if (earlierFailures > mostFailures)
        return false;
    if (error.isMoved())
        return true;
    if (!error.isDamage())
        return false;
    if (!m_place.databaseIdentity().isSameFileAs(m_file))
        return true; // another process has renamed it
    if (!std::exchange(wasReadAgain, true))
        return true; // a disk read error is reported like this, too
    const auto aside = m_place.setAside(m_file);
    if (!aside)
        return false;
    m_notice = "The history was damaged (" + std::string(error.what()) + "). It is kept as " + *aside
        + ", and a new one was begun.";
    m_log.write(*m_notice);
    return true;
}

void Journal::fail(const char* reason)
{
    try {
        m_problem = "The history of " + m_place.watchedFile() + " cannot be used: " + reason;
        m_log.write(*m_problem);
    } catch (const std::bad_alloc&) {
        m_problem.emplace("Out of memory"); // short enough to need no allocation
    }
}

std::optional<std::int64_t> Journal::begin(const NewVersion& version)
{
    return insert(version, VersionState::underWay);
}

std::optional<std::int64_t> Journal::record(const NewVersion& version)
{
    const auto number = insert(version, VersionState::done);
    if (number)
        tidy();
    return number;
}

std::optional<std::int64_t> Journal::insert(const NewVersion& version, VersionState state)
{
    return attempt(Access::write, [&](Database& database) -> std::optional<std::int64_t> {
        if (std::max(version.bytes.bytes().size(), version.meant.value_or("").bytes().size())
            > largestContents) {
            fail("the file is too large");
            return std::nullopt;
        }
        Transaction transaction(database, Transaction::Kind::write);
        const std::int64_t number = insertInto(database, version, state);
        // Created before the version: a marker without a version is harmless, a missing one is not.
        if (state == VersionState::underWay && !m_place.makeMarker()) {
            fail("its marker file cannot be made");
            return std::nullopt;
        }
        transaction.commit();
        return number;
    });
}

std::int64_t Journal::insertInto(Database& database, const NewVersion& version, VersionState state)
{
    VersionTable table(database);
    ContentStore contents(database);
    const auto newest = table.newest();
    const std::int64_t bytes = contents.keep(
        version.bytes, newest ? std::optional(newest->bytes) : std::nullopt, version.previousBytes);
    std::optional<std::int64_t> meant;
    if (version.meant && version.meant->bytes() != version.bytes.bytes())
        meant = contents.keep(*version.meant, bytes, version.bytes);
    return table.insert(version, state, version.time.value_or(std::time(nullptr)),
        newest ? std::optional(newest->version) : std::nullopt, {bytes, meant});
}

bool Journal::finish(std::int64_t number, VersionState state)
{
    const bool isFinished = attempt(Access::write, [&](Database& database) {
        Transaction transaction(database, Transaction::Kind::write);
        const bool isThere = VersionTable(database).setState(number, state);
        transaction.commit();
        return isThere;
    });
    if (isFinished)
        tidy();
    return isFinished;
}

bool Journal::abandon(std::int64_t number)
{
    const bool isGone = attempt(Access::write, [&](Database& database) {
        Transaction transaction(database, Transaction::Kind::write);
        const bool isThere = VersionTable(database).abandon(number);
        transaction.commit();
        return isThere;
    });
    if (isGone)
        tidy();
    return isGone;
}

// The next version finds any leftovers, so a failure here is not a failure of the operation before it.
void Journal::tidy()
{
    const auto problem = m_problem;
    attempt(Access::write, [&](Database& database) {
        Transaction transaction(database, Transaction::Kind::write);
        if (!VersionTable(database).isAnyUnderWay())
            m_place.removeMarker();
        thin(database);
        transaction.commit();
        return true;
    });
    m_problem = problem;
}

void Journal::thin(Database& database) const
{
    VersionTable table(database);
    table.forget(expiredVersions(table.dates(), m_limits.days));
    sweepContents(database, SweepCost::inPassing);
    ContentStore contents(database);
    if (contents.packedSize() <= m_limits.bytes)
        return;
    table.forgetBefore(table.firstWithContentsFrom(contents.firstWithin(m_limits.bytes)));
    sweepContents(database, SweepCost::whateverItTakes);
}

// A data version counts within one connection and has 32 bits.
std::int64_t Journal::changeMark()
{
    return attempt(Access::read, [this](Database& database) {
        Statement row(database, "PRAGMA data_version");
        row.step();
        return (m_openings << 32U) + row.integer(0);
    });
}

std::vector<JournalVersion> Journal::versions()
{
    return attempt(Access::read, [](Database& database) {
        Transaction transaction(database, Transaction::Kind::read);
        auto versions = VersionTable(database).versions(ContentStore(database).unreadable());
        std::reverse(versions.begin(), versions.end());
        return versions;
    });
}

std::optional<JournalVersion> Journal::version(std::int64_t number)
{
    const auto all = versions();
    const auto found = std::find_if(
        all.begin(), all.end(), [number](const JournalVersion& version) { return version.number == number; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

std::optional<JournalVersion> Journal::newest()
{
    const auto all = versions();
    return all.empty() ? std::nullopt : std::optional(all.front());
}

std::vector<JournalVersion> Journal::underWay()
{
    auto all = versions();
    std::erase_if(all, [](const JournalVersion& version) { return version.state != VersionState::underWay; });
    return all;
}

bool Journal::noteLeft(std::string_view bytes)
{
    return attempt(
        Access::read, [&](Database& /*database*/) { return m_place.noteLeft(contentDigest(bytes)); });
}

bool Journal::isLeft(std::string_view bytes)
{
    return attempt(
        Access::read, [&](Database& /*database*/) { return m_place.left() == contentDigest(bytes); });
}

std::optional<std::string> Journal::bytesOf(std::int64_t number)
{
    return contentOf(number, false);
}

std::optional<std::string> Journal::meantOf(std::int64_t number)
{
    return contentOf(number, true);
}

std::optional<std::string> Journal::contentOf(std::int64_t number, bool meant)
{
    std::optional<std::int64_t> damaged;
    auto bytes = attempt(Access::read, [&](Database& database) -> std::optional<std::string> {
        Transaction transaction(database, Transaction::Kind::read);
        const auto contents = VersionTable(database).contentsOf(number);
        if (!contents)
            return std::nullopt;
        const std::int64_t wanted = meant ? contents->meant.value_or(contents->bytes) : contents->bytes;
        auto found = ContentStore(database).bytes(wanted);
        if (!found)
            damaged = wanted;
        return found;
    });
    if (damaged) {
        attempt(Access::write, [&](Database& database) {
            Transaction transaction(database, Transaction::Kind::write);
            ContentStore(database).markDamaged(*damaged);
            transaction.commit();
            return true;
        });
        fail(("the contents of version " + std::to_string(number) + " are damaged").c_str());
    }
    return bytes;
}

std::optional<JournalVersion> Journal::undoable()
{
    const auto all = versions();
    return onlyIfContentsAreThere(all, undoOrder({all.rbegin(), all.rend()}).undo);
}

std::optional<JournalVersion> Journal::redoable()
{
    const auto all = versions();
    return onlyIfContentsAreThere(all, undoOrder({all.rbegin(), all.rend()}).redo);
}

std::optional<JournalVersion> Journal::onlyIfContentsAreThere(
    const std::vector<JournalVersion>& versions, std::optional<std::int64_t> number)
{
    const auto readable = [&versions](std::optional<std::int64_t> wanted) {
        return std::find_if(versions.begin(), versions.end(), [wanted](const JournalVersion& version) {
            return version.number == wanted && version.isReadable;
        });
    };
    const auto found = readable(number);
    if (found == versions.end())
        return std::nullopt;
    // Before the very first version there was no file, or an empty one.
    if (found->before && readable(found->before) == versions.end())
        return std::nullopt;
    return *found;
}

bool Journal::forgetBefore(std::int64_t number)
{
    return attempt(Access::write, [number](Database& database) {
        Transaction transaction(database, Transaction::Kind::write);
        VersionTable(database).forgetBefore(number);
        sweepContents(database, SweepCost::whateverItTakes);
        transaction.commit();
        return true;
    });
}

bool Journal::forgetAll()
{
    return forgetBefore(std::numeric_limits<std::int64_t>::max());
}

std::uint64_t Journal::sizeOnDisk() const
{
    return m_place.sizeOnDisk();
}

} // namespace quorvane::history
