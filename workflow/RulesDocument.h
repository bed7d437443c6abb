#pragma once

#include "rules/ChangeSet.h"
#include "rules/RuleManager.h"
#include "rules/RulesMerge.h"
#include "workflow/Background.h"
#include "workflow/ChangeReason.h"
#include "workflow/DocumentObserver.h"
#include "workflow/ProgramSettings.h"
#include "workflow/RunState.h"
#include "workflow/UndoSteps.h"
#include "workflow/UserRulesFile.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

// Who a document belongs to.
struct DocumentOwner {
    std::string program; // as the history names it
    std::string stateFolder; // of the journals
    ProgramSettings settings{};
    std::chrono::milliseconds lockTimeout = std::chrono::seconds(5); // for another program's write to end
    Background* background = nullptr; // for the writing of many rules; none: everything is done at once
};

// What came of a change.
struct ChangeResult {
    rules::ChangeSet done{}; // what the store really was changed by
    std::optional<std::string> failure{}; // why the user's file does not hold it, so far
};

// The rules of the current user: the one way in which they change.
//
// A change goes into the store, into the journal, and into the user's file, where what other programs have
// written meanwhile is merged first: nothing that they wrote is lost, and nothing that is changed here. Marks
// the run as changed. With a background, more than 20,000 rules are written by it: the store is changed when
// an operation returns, the file a little later. For the thread that owns the store.
class RulesDocument {
public:
    // All must outlive it.
    RulesDocument(rules::RuleManager& store, RunState& run, DocumentOwner owner, platform::Log& log);
    // Waits until what is under way is written.
    ~RulesDocument();
    RulesDocument(const RulesDocument&) = delete;
    RulesDocument& operator=(const RulesDocument&) = delete;

    rules::RuleManager& store() { return m_store; }
    const rules::RuleManager& store() const { return m_store; }
    const std::string& stateFolder() const { return m_owner.stateFolder; }
    const ProgramSettings& settings() const { return m_owner.settings; }
    // From the next write on.
    void setSettings(const ProgramSettings& settings);

    // None when null. Outlives the document, or is taken out first.
    void setObserver(DocumentObserver* observer) { m_observer = observer; }

    // Settles a write that an earlier run, or another program of ours, left under way. Before the first
    // change.
    void recover();

    // Changes the store, writes the file, keeps the version. Also writes when nothing is to be changed.
    ChangeResult perform(const rules::ChangeSet& change, const ChangeReason& reason);

    // The run counts as one that changed rules, whatever comes of it.
    void markChanged() { m_run.g_dirty = 1; }

    // A change made to the store by other means, rule by rule: begin() before the first, commit() with all
    // that was done after the last. Does not mark the run as changed.
    void begin();
    ChangeResult commit(rules::ChangeSet done, const ChangeReason& reason);

    // Takes the newest action of ours back, or does again what was taken back last; what others did since
    // stays. False when there is none, or when its versions cannot be read.
    bool undo();
    bool redo();
    // What these would do, in words; none when there is nothing. May open the journal.
    std::optional<std::string> undoName();
    std::optional<std::string> redoName();

    // From now on undo and redo go by the journal alone.
    void forgetSteps();

    // Brings the very bytes of a version back. False when it is known to be unreadable; failure() says why
    // the write failed, also where only that found the version damaged.
    bool restore(std::int64_t version);

    // Another program has changed the file: takes its rules over, keeping what is not written yet.
    void takeForeignChanges();
    // Tells, once, when another program has changed the file and nothing has taken that over.
    void lookAtFile();
    // Makes the file as it is a version, unless it is one: what another program may remove before the first
    // change is then still there.
    void keepPresentVersion();
    // True when the file is another than the one that was read or written last.
    bool isFileAhead() const;

    // Reads the user's configuration again, as the store does it; nothing is left to write then.
    void reload();
    // Deletes the fail-safe file and the marker beside it; what the file holds is kept in a journal of its
    // own.
    void discardSuggestions();

    // Tries again to write what could not be written.
    void writeNow();
    void waitUntilWritten();
    bool isWriting() const { return m_isWriting; }
    // True when the store holds what the file does not.
    bool hasUnwrittenChanges() const { return !m_orders.empty() || m_lacksOrder; }
    // Why the last write failed; none after one that succeeded.
    const std::optional<std::string>& failure() const { return m_failure; }

    // For windows that look at the versions.
    std::unique_ptr<history::Journal> openJournal() const { return m_file.openJournal(); }

private:
    WriteOrder orderFor(const ChangeCounts& counts, const ChangeReason& reason) const;
    ChangeCounts countsOf(const rules::ChangeSet& done) const;
    // False, and the failure says so, when `work` has run out of memory.
    template <class Work> bool attempt(Work work)
    {
        try {
            work();
            return true;
        } catch (const std::bad_alloc&) {
            failForMemory();
            return false;
        }
    }
    void failForMemory();
    rules::ChangeSet applied(const rules::ChangeSet& change);
    void pump();
    void startWriting();
    void continueWith(platform::FileLock lock);
    void writeInBackground(platform::FileLock lock);
    void finish(const WriteReport& report);
    void noteWritten(const WriteReport& report);
    void fail(const std::string& message);
    void joinOrders();

    bool bringStoreUpToDate(platform::FileLock& lock);
    bool settleVersions(std::chrono::milliseconds wait);
    void takeIn(
        const rules::RulesFileText& theirs, const std::optional<std::vector<rules::RuleValue>>& inForce);
    void mergeWith(const std::vector<rules::RuleValue>& theirs);
    void takeFileOver();
    void noteFileRead();
    void makeSnapshotReady() const;
    void takeRestored();
    void reportReload(const std::vector<rules::RuleRef>& before);
    std::optional<std::int64_t> followingVersion() const;
    void reportMerge(const rules::ChangeSet& done, const std::vector<rules::MergeReport>& reports);

    bool step(ChangeReason::Kind kind);
    std::optional<rules::ChangeSet> journalledStep(
        const history::JournalVersion& version, ChangeReason::Kind kind);

    void warnOfUnwritableRules(std::uint64_t count);
    void inBackground(std::function<void()> work, std::function<void()> then);
    void tell(const DocumentNews& news);
    void reportFile();

    rules::RuleManager& m_store;
    RunState& m_run;
    DocumentOwner m_owner;
    platform::Log& m_log;
    DocumentObserver* m_observer = nullptr;
    UserRulesFile m_file;

    rules::KnownFile m_knownFile; // as read or written last
    std::uint64_t m_knownReading = 0; // of the store, by which it was read
    std::optional<rules::RulesSnapshot> m_rulesInFile; // none: those of the store
    std::deque<WriteOrder> m_orders; // done in the store, not yet in the file; the first may be under way
    bool m_lacksOrder = false; // there was no memory for that of a change
    bool m_isWriting = false;
    std::optional<std::string> m_failure;

    UndoSteps m_steps; // of this run, while no other program has changed the file
    std::uint64_t m_unwritableRules = 0; // as told last
    std::optional<std::int64_t> m_knownVersion; // of the journal, that is known to the person last
    bool m_hasToldOfFile = false; // that it is another than the known one
};

} // namespace quorvane::workflow
