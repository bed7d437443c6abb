#pragma once

#include "history/DigestedBytes.h"
#include "history/Journal.h"
#include "platform/FileLock.h"
#include "platform/Locations.h"
#include "rules/KnownFile.h"
#include "rules/RulesSnapshot.h"
#include "workflow/ChangeReason.h"
#include "workflow/CutWrite.h"
#include "workflow/DocumentObserver.h"
#include "workflow/ProgramSettings.h"

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

// How many rules a change brought, took and changed.
struct ChangeCounts {
    std::uint64_t added = 0;
    std::uint64_t removed = 0;
    std::uint64_t changed = 0;

    bool isNothing() const { return added == 0 && removed == 0 && changed == 0; }
    ChangeCounts& operator+=(const ChangeCounts& other);
};

// What is to be written, and why. Shares what it holds; may go to another thread.
struct WriteOrder {
    rules::RulesSnapshot rules{}; // in writing order
    ChangeReason reason{};
    ChangeCounts counts{};
    bool wholeLines = false; // every byte of every line, also beyond ASCII
    std::optional<std::int64_t> restores{}; // the version whose very bytes are written in place of `rules`
    std::optional<std::string> unreadReason{}; // why the present file must be kept under another name first
    std::uint64_t step = 0; // of the document's, for which it is written
};

// What came of a write.
struct WriteReport {
    bool isWritten = false; // the file was opened, and new content went to it
    std::optional<std::string> message{}; // why not all of it did; the store's last error message
    bool isHopeless = false; // the same order can never be carried out
    std::vector<DocumentNews> news{};
    std::optional<std::int64_t> version{};
    rules::KnownFile known{};
    std::uint64_t unwritableRules = 0; // that do not come back from the file as they are
    std::optional<std::vector<rules::RuleValue>>
        readAs{}; // the rules that a reader makes of it, where others were meant
};

// Why the rules file cannot be written, `lock` being the lock on it that could not be had.
std::string unwritableMessage(const std::string& path, const platform::FileLock& lock);

// The user's rules file and its journal: what happens to a change on its way to the disk. Every operation
// that takes a lock needs it held. Operations may run on any thread, one at a time.
class UserRulesFile {
public:
    // `program`: the name under which versions are kept. `log` must outlive it.
    UserRulesFile(const platform::Locations& locations, std::string program, std::string stateFolder,
        platform::Log& log);

    const std::string& path() const { return m_path; }
    void setLimits(const history::JournalLimits& limits);

    platform::FileLock lock(std::chrono::milliseconds wait) const;

    // A version whose write has not been settled. Costs a look for a small file.
    bool mayBeUnderWay() const;

    // Settles the versions under way: completes the write of the newest, or finds that it is done or never
    // began.
    struct Recovery {
        std::vector<DocumentNews> news{};
        // The rules in force, where the file does not hold them: another program has written since the write
        // was cut short, or it could not be completed. The next write that succeeds settles the version.
        std::optional<std::vector<rules::RuleValue>> rules{};
    };
    Recovery recover(platform::FileLock& lock);

    // The rules that the version under way meant, as the text of a rules file, for who only reads; none when
    // nothing was cut short, or when another program has written since. Waits at most `wait` for another
    // program to write the file.
    std::optional<std::string> textUnderWay(std::chrono::milliseconds wait);

    WriteReport write(const WriteOrder& order, platform::FileLock& lock);

    // Keeps the file's content as a version, another program's, unless it is the newest. Waits at most `wait`
    // for another program to write the file, which then keeps what it finds.
    struct PresentVersion {
        std::optional<std::int64_t> number{}; // that holds the file's content; none when it was not kept
        std::optional<std::int64_t> before{}; // the version before that
    };
    PresentVersion keepPresentVersion(std::chrono::milliseconds wait);

    // For the thread that calls the other operations.
    history::Journal& journal();
    // A journal of one's own, for any thread.
    std::unique_ptr<history::Journal> openJournal() const;

private:
    struct Meant;

    void writeTo(WriteReport& report, const WriteOrder& order, platform::FileLock& lock);
    std::optional<Recovery> settle(const history::JournalVersion& version, platform::FileLock& lock);
    FileAfterWrite stateOf(
        const history::JournalVersion& version, std::string_view now, std::string_view meant);
    bool complete(const history::JournalVersion& version, std::string meant, platform::FileLock& lock);
    std::optional<std::string> putAside(
        const std::string& reason, platform::FileLock& lock, WriteReport& report);
    Meant meantBy(const WriteOrder& order) const;
    std::optional<std::string> refusalOf(const WriteOrder& order, const std::optional<Meant>& meant) const;
    std::optional<Meant> meantByVersion(std::int64_t number);
    std::optional<std::int64_t> beginVersion(
        const WriteOrder& order, const Meant& meant, const history::DigestedBytes& previous);
    void writeOver(WriteReport& report, const Meant& meant, std::string_view old);
    void settleVersion(const WriteReport& report, platform::FileLock& lock);
    void noteLeft(const platform::FileLock& lock);
    void reportFileAside(WriteReport& report, const std::string& reason, const std::string& aside);
    void lookAtWritten(WriteReport& report, const Meant& meant) const;
    std::optional<std::int64_t> keepForeign(
        const history::DigestedBytes& bytes, std::vector<DocumentNews>& news);
    void reportJournal(std::vector<DocumentNews>& news);

    const std::string m_path;
    const std::string m_program;
    const std::string m_stateFolder;
    platform::Log& m_log;
    history::JournalLimits m_limits;
    std::unique_ptr<history::Journal> m_journal; // opened when first needed
    bool m_hasToldOfJournal = false;
};

} // namespace quorvane::workflow
