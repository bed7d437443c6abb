#pragma once

#include "history/JournalPlace.h"
#include "history/JournalVersion.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::history {

class Database;
class DatabaseError;

// The versions of one file, stored durably and shared by all programs of a user.
//
// No operation throws. A journal that cannot be used (of a newer format, unwritable, of another user) returns
// empty, false or none, and problem() says why; that must not keep a file from being written. A damaged
// journal is renamed and a new one started; takeNotice() reports that once. Nothing is created on disk before
// the first version is recorded.
//
// Each operation is a separate transaction on the database that is in place when it begins, and waits at most
// 5 seconds for those of other processes; after one that has waited in vain, until one succeeds, 0.1 seconds.
// Several journals of one file may be open, in any number of processes and threads; one object is used by one
// thread at a time. Do not use it across a fork.
class Journal {
public:
    // `stateFolder`: where journals are, usually defaultStateFolder(). `watchedFile` need not exist; it is
    // identified by its real path. Never null.
    static std::unique_ptr<Journal> open(const std::string& stateFolder, const std::string& watchedFile,
        const JournalLimits& limits, platform::Log& log);

    // Whether a version of `watchedFile` may be under way. Only checks for a small file beside the journal.
    static bool mayBeUnderWay(const std::string& stateFolder, const std::string& watchedFile);

    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Why the last operation failed, in words; none when it did not.
    const std::optional<std::string>& problem() const { return m_problem; }

    // A message for the user, returned once: that a damaged journal was renamed, and to which name.
    std::optional<std::string> takeNotice();

    // Makes a version durable, marked as under way, before its bytes are written to the file. Returns its
    // number; none when that failed.
    std::optional<std::int64_t> begin(const NewVersion& version);

    // Completes a version that was begun; `state` is done or recovered. Its contents include older ones still
    // under way, which become recovered. Forgets what the limits no longer allow.
    bool finish(std::int64_t number, VersionState state);

    // Removes a version under way whose write never took place, as if it had never been begun. False when
    // there is no such version under way.
    bool abandon(std::int64_t number);

    // Begins and finishes a version whose bytes are in the file already.
    std::optional<std::int64_t> record(const NewVersion& version);

    // A number that changes whenever another journal object for the same file, in this process or elsewhere,
    // has changed it. Cheap; 0 when there is no journal yet.
    std::int64_t changeMark();

    // All versions, newest first.
    std::vector<JournalVersion> versions();
    std::optional<JournalVersion> version(std::int64_t number);
    std::optional<JournalVersion> newest();

    // The versions that are under way, newest first.
    std::vector<JournalVersion> underWay();

    // Records, on a best-effort basis, that the failed write of the version under way left these bytes in the
    // file; and checks whether it did.
    bool noteLeft(std::string_view bytes);
    bool isLeft(std::string_view bytes);

    // The bytes of the file, and the rules as intended: the same bytes if these could hold them. None for a
    // version that is unknown or whose contents are damaged; damaged contents are marked unreadable.
    std::optional<std::string> bytesOf(std::int64_t number);
    std::optional<std::string> meantOf(std::int64_t number);

    // The action that an undo would revert, and the one that a redo would repeat. None when there is none, or
    // when its contents or those of the version before it no longer exist.
    std::optional<JournalVersion> undoable();
    std::optional<JournalVersion> redoable();

    // Forget all versions before `number`, or all. The newest stays, being the current state of the file.
    bool forgetBefore(std::int64_t number);
    bool forgetAll();

    // The size of the journal on disk in bytes.
    std::uint64_t sizeOnDisk() const;

private:
    enum class Access { read, write };

    Journal(JournalPlace place, const JournalLimits& limits, platform::Log& log);

    // Runs `work(database)` and returns its result. A failure sets the problem and returns an empty result.
    // When the journal turns out to be damaged or replaced by another process, `work` runs again, on the new
    // one.
    template <typename Work> auto attempt(Access access, Work work);
    bool openDatabase(Access access);
    bool isOpenDatabaseInPlace() const;
    bool recoverFrom(const DatabaseError& error, int earlierFailures, bool& wasReadAgain);
    void fail(const char* reason);
    std::optional<std::int64_t> insert(const NewVersion& version, VersionState state);
    std::int64_t insertInto(Database& database, const NewVersion& version, VersionState state);
    void tidy();
    void thin(Database& database) const;
    std::optional<std::string> contentOf(std::int64_t number, bool meant);
    static std::optional<JournalVersion> onlyIfContentsAreThere(
        const std::vector<JournalVersion>& versions, std::optional<std::int64_t> number);

    const JournalPlace m_place;
    const JournalLimits m_limits;
    platform::Log& m_log;
    std::unique_ptr<Database> m_database;
    platform::FileIdentity m_file; // of the open database
    std::int64_t m_openings = 0; // of databases
    bool m_hasWaitedInVain = false; // for another process
    std::optional<std::string> m_problem;
    std::optional<std::string> m_notice;
};

} // namespace quorvane::history
