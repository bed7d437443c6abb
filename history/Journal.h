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

// The versions of one file, kept durably and shared by all programs of a user.
//
// No operation throws. A journal that cannot be used (of a newer format, unwritable, somebody else's) answers
// empty, false or none, and problem() says why; a file is written all the same. A damaged journal is set
// aside under another name and begun anew; takeNotice() tells that once. Nothing is made on disk before the
// first version is recorded.
//
// Each operation is a transaction of its own and waits at most 5 seconds for those of other processes.
// Several journals of one file may be open, in any number of processes and threads; one object is used by one
// thread at a time. Not to be carried over a fork.
class Journal {
public:
    // `stateFolder`: where journals are, as defaultStateFolder() has it. `watchedFile` need not exist; it is
    // known by its real path. Never null.
    static std::unique_ptr<Journal> open(const std::string& stateFolder, const std::string& watchedFile,
        const JournalLimits& limits, platform::Log& log);

    // Whether a version of `watchedFile` may be under way. Asks for a small file beside the journal, opens
    // none.
    static bool mayBeUnderWay(const std::string& stateFolder, const std::string& watchedFile);

    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Why the last operation could not be carried out, in words; none when it could.
    const std::optional<std::string>& problem() const { return m_problem; }

    // What the user should learn, once: that a damaged journal was set aside, and under which name.
    std::optional<std::string> takeNotice();

    // Makes a version durable, marked as under way, before its bytes are written to the file. Returns its
    // number; none when it could not be kept.
    std::optional<std::int64_t> begin(const NewVersion& version);

    // Settles a version that was begun; `state` is done or recovered. Older ones that are still under way are
    // part of what it holds, and count as recovered. Forgets what the limits no longer allow.
    bool finish(std::int64_t number, VersionState state);

    // Removes a version under way whose write never took place: it neither counts as an action nor comes
    // between its neighbours. False when there is no such version under way.
    bool abandon(std::int64_t number);

    // Begins and finishes a version whose bytes are in the file already.
    std::optional<std::int64_t> record(const NewVersion& version);

    // Another number whenever another journal of the same file, in this process or elsewhere, has changed it
    // since. Cheap; 0 when there is nothing yet.
    std::int64_t changeMark();

    // All versions, newest first.
    std::vector<JournalVersion> versions();
    std::optional<JournalVersion> version(std::int64_t number);
    std::optional<JournalVersion> newest();

    // The versions that are under way, newest first.
    std::vector<JournalVersion> underWay();

    // Remembers, as well as that can be done, that the failed write of the version under way has left these
    // bytes in the file; and whether it has.
    bool noteLeft(std::string_view bytes);
    bool isLeft(std::string_view bytes);

    // The bytes of the file, and the rules as meant: the same bytes where they hold them. None for a version
    // that is unknown or whose contents are damaged; damaged contents are remembered as unreadable.
    std::optional<std::string> bytesOf(std::int64_t number);
    std::optional<std::string> meantOf(std::int64_t number);

    // The action that an undo takes back, and the one that a redo does again. None when there is none, and
    // when its contents or those of the version before it are no longer there.
    std::optional<JournalVersion> undoable();
    std::optional<JournalVersion> redoable();

    // Forget all versions before `number`, or all. The newest stays, being the present state of the file.
    bool forgetBefore(std::int64_t number);
    bool forgetAll();

    // Bytes that the journal takes on disk.
    std::uint64_t sizeOnDisk() const;

private:
    enum class Access { read, write };

    Journal(JournalPlace place, const JournalLimits& limits, platform::Log& log);

    // Runs `work(database)` and gives its answer. Failures become the problem and an empty answer. When the
    // journal is found damaged or replaced by another process, `work` runs again, on the one that is there
    // then.
    template <typename Work> auto attempt(Access access, Work work);
    bool openDatabase(Access access);
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
    std::uint64_t m_identity = 0; // of the data base file
    std::optional<std::string> m_problem;
    std::optional<std::string> m_notice;
};

} // namespace quorvane::history
