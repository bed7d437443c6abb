#pragma once

#include "history/DigestedBytes.h"
#include "history/Journal.h"
#include "platform/FileLock.h"
#include "platform/Locations.h"
#include "rules/ChangeSet.h"
#include "rules/FileDifference.h"
#include "rules/KnownFile.h"
#include "rules/RulesSnapshot.h"
#include "workflow/ChangeReason.h"
#include "workflow/CutWrite.h"
#include "workflow/DocumentObserver.h"
#include "workflow/ProgramSettings.h"
#include "workflow/UnwritableRules.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

// How many rules a change added, removed and changed.
struct ChangeCounts {
    std::uint64_t added = 0;
    std::uint64_t removed = 0;
    std::uint64_t changed = 0;

    bool isNothing() const { return added == 0 && removed == 0 && changed == 0; }
};

// What is to be written, and why. Shares immutable data; may be passed to another thread.
struct WriteOrder {
    rules::RulesSnapshot rules{}; // in writing order
    ChangeReason reason{};
    // What was done since the write before; counted by the thread that writes. Null: the version before
    // tells.
    std::shared_ptr<const rules::ChangeSet> change{};
    bool completes = false; // only an interrupted write, and holds no change of its own
    bool isJoined = false; // stands for several actions, none of which is a version of its own
    bool hasFailed = false; // to be written
    bool wholeLines = false; // write every line completely, including non-ASCII text
    std::optional<std::int64_t> restores{}; // the version whose exact bytes are written instead of `rules`
    std::optional<std::string> unreadReason{}; // why the current file must be renamed first
    std::optional<std::uint64_t> rulesInFile{}; // how many the current file holds; none when not known
    std::uint64_t step = 0; // the number of the action that it contains, undoes or redoes; 0 for none
};

// The result of a write.
struct WriteReport {
    bool isWritten = false; // the file was opened and new content written
    std::optional<std::string> message{}; // why it was not written completely; the store's last error message
    bool isHopeless = false; // the same order can never succeed
    std::vector<DocumentNews> news{};
    std::optional<std::int64_t> version{};
    rules::KnownFile known{};
    UnwritableRules unwritable{};
    std::optional<rules::RulesSnapshot>
        readAs{}; // the rules that the file reads back as, if they differ from those of the order
};

// Why the rules file cannot be written; `lock` is the failed attempt to lock it.
std::string unwritableMessage(const std::string& path, const platform::FileLock& lock);

// The user's rules file and its journal: writes changes to disk. Every operation with a lock parameter
// requires it to be held. Operations may run on any thread, one at a time.
class UserRulesFile {
public:
    // `program`: the name under which versions are recorded. `log` must outlive it.
    UserRulesFile(const platform::Locations& locations, std::string program, std::string stateFolder,
        platform::Log& log);

    const std::string& path() const { return m_path; }
    void setLimits(const history::JournalLimits& limits);

    platform::FileLock lock(std::chrono::milliseconds wait) const;

    // Whether there may be a version whose write was not completed. Only checks for a small file.
    bool mayBeUnderWay() const;

    // Completes the versions under way: finishes the write of the newest, or finds that it is done or never
    // began.
    struct Recovery {
        std::vector<DocumentNews> news{};
        // The rules in force, if the file does not contain them: another program has written since the
        // interrupted write, or it could not be completed. The next successful write completes the version.
        std::optional<std::vector<rules::RuleValue>> rules{};
    };
    Recovery recover(platform::FileLock& lock);

    // The intended rules of the version under way, as the text of a rules file, for readers; none when no
    // write was interrupted, or when another program has written since. Waits at most `wait` for another
    // process that is writing the file.
    std::optional<std::string> textUnderWay(std::chrono::milliseconds wait);

    // True when the file has the very bytes of the newest version, and that is of our programs. Waits at most
    // `wait` for another process that is writing the file.
    bool isAsWeLeftIt(std::chrono::milliseconds wait);

    WriteReport write(const WriteOrder& order, platform::FileLock& lock);

    // Records the file's content as a version of another program, unless it is the newest. Waits at most
    // `wait` for another process that is writing the file, which then records it itself.
    struct PresentVersion {
        std::optional<std::int64_t>
            number{}; // the version with the file's content; none when it was not recorded
        std::optional<std::int64_t> before{}; // the version before that
    };
    PresentVersion keepPresentVersion(std::chrono::milliseconds wait);

    // For the thread that calls the other operations.
    history::Journal& journal();
    // A separate journal object, for any thread.
    std::unique_ptr<history::Journal> openJournal() const;

private:
    struct Meant;

    void writeTo(WriteReport& report, const WriteOrder& order, platform::FileLock& lock);
    std::optional<Recovery> settle(const history::JournalVersion& version, platform::FileLock& lock);
    FileAfterWrite stateOf(
        const history::JournalVersion& version, std::string_view now, std::string_view meant);
    bool isCutShort(const history::JournalVersion& version, std::string_view now);
    bool complete(const history::JournalVersion& version, std::string meant, platform::FileLock& lock);
    std::optional<std::string> putAside(
        const std::string& reason, platform::FileLock& lock, WriteReport& report);
    Meant meantBy(const WriteOrder& order) const;
    rules::FileDifferenceCounts countsSinceNewestVersion(std::string_view text);
    std::optional<std::string> refusalOf(
        const WriteOrder& order, const std::optional<Meant>& meant, std::string_view present) const;
    static bool isRepeatedForEver(const WriteOrder& order, const std::optional<std::int64_t>& recorded,
        const Meant& meant, std::string_view old);
    std::optional<Meant> meantByVersion(std::int64_t number);
    std::optional<std::int64_t> versionUnderWay(const WriteOrder& order, const Meant& meant);
    std::optional<std::int64_t> beginVersion(
        const WriteOrder& order, const Meant& meant, const history::DigestedBytes& previous);
    void writeOver(WriteReport& report, const Meant& meant, std::string_view old);
    void settleVersion(const WriteReport& report, bool isOfEarlierWrite, platform::FileLock& lock);
    void noteLeft(const platform::FileLock& lock);
    void reportFileAside(WriteReport& report, const std::string& reason, const std::string& aside);
    void checkWritten(WriteReport& report, const Meant& meant, const WriteOrder& order) const;
    std::optional<std::int64_t> keepForeign(const history::DigestedBytes& bytes,
        std::vector<DocumentNews>& news, std::optional<std::uint64_t> rulesInFile = std::nullopt);
    void reportJournal(std::vector<DocumentNews>& news);

    const std::string m_path;
    const std::string m_program;
    const std::string m_stateFolder;
    platform::Log& m_log;
    history::JournalLimits m_limits;
    std::unique_ptr<history::Journal> m_journal; // opened when first needed
    bool m_hasReportedJournal = false;
};

} // namespace quorvane::workflow
