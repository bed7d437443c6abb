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
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::rules {
class PreparedReload;
class RulesFileText;
} // namespace quorvane::rules

namespace quorvane::workflow {

class ForeignMerge;

// The program that owns a document, and its settings.
struct DocumentOwner {
    std::string program{}; // as the history names it
    std::string stateFolder{}; // of the journals
    ProgramSettings settings{};
    std::chrono::milliseconds lockTimeout = std::chrono::seconds(5); // for another process to finish writing
    bool undoRefusesCuts = false; // of rules that are complete in the file; redo, too
    Background* background = nullptr; // for writing many rules; null: everything is done synchronously
};

// What another thread does for a document.
enum class DocumentWork {
    none,
    reading, // the rules file, to take over what is in it
    writing, // it, or waiting for another process to finish writing it
    recording, // it as a version
    readingHistory, // versions, to undo or redo one
};

// The result of a change.
struct ChangeResult {
    std::optional<std::string> failure{}; // why the user's file does not contain it yet
};

// The rules of the current user. All changes of them go through this class.
//
// A change goes into the store, into the journal, and into the user's file; what other programs have written
// there in the meantime is merged first, so that neither their changes nor ours are lost. Marks the run as
// changed. With a background, more than 5,000 rules, or a file that holds as many, are written by it: the
// store is changed when an operation returns, the file a little later. For the thread that owns the store.
class RulesDocument {
public:
    // All must outlive it.
    RulesDocument(rules::RuleManager& store, RunState& run, DocumentOwner owner, platform::Log& log);
    // Waits until pending work is done.
    ~RulesDocument();
    RulesDocument(const RulesDocument&) = delete;
    RulesDocument& operator=(const RulesDocument&) = delete;

    rules::RuleManager& store() { return m_store; }
    const rules::RuleManager& store() const { return m_store; }
    const std::string& stateFolder() const { return m_owner.stateFolder; }
    const ProgramSettings& settings() const { return m_owner.settings; }
    // From the next write on.
    void setSettings(const ProgramSettings& settings);

    // May be null. Must outlive the document or be reset first.
    void setObserver(DocumentObserver* observer) { m_observer = observer; }

    // Completes a write that an earlier run, or another of our programs, left under way. Call it before the
    // first change.
    void recover();

    // Changes the store, writes the file, records the version. Also writes when the change is empty.
    ChangeResult perform(const rules::ChangeSet& change, const ChangeReason& reason);
    ChangeResult perform(rules::ChangeSet&& change, const ChangeReason& reason); // costs no copy

    // Marks the run as one that changed rules, whatever the result.
    void markChanged() { m_run.g_dirty = 1; }

    // For changes made to the store directly, rule by rule: begin() before the first, commit() with all
    // changes after the last. Does not mark the run as changed.
    void begin();
    ChangeResult commit(rules::ChangeSet done, const ChangeReason& reason);

    // Reverts our newest action, or repeats the one undone last; later changes by others stay. False when
    // there is none, or when its versions cannot be read. With a background, what it is doing is not waited
    // for, nor is the reading of a file that another program has changed, and an action of an earlier run, or
    // with later changes by others, is merged by it into more than 5,000 rules: the store changes later
    // then, unless news say that there is none or that the versions cannot be read. A change that is made
    // before that waits for it.
    bool undo();
    bool redo();
    // True when the file has the very bytes that our programs wrote last.
    bool isFileAsWeLeftIt();
    // The names of these actions; none when there is none, or while one is still to come. May open the
    // journal.
    std::optional<std::string> undoName();
    std::optional<std::string> redoName();

    // Drops the steps in memory: from now on undo and redo use only the journal.
    void forgetSteps();

    // Restores the exact bytes of a version. False when it is known to be unreadable; failure() says why the
    // write failed, also if only that found the version damaged. Waits for no other work either: news then
    // say that the version cannot be read.
    bool restore(std::int64_t version);

    // Merges the rules of a file that another program has changed, keeping changes not written yet. With a
    // background, more than 5,000 rules are read by it: the store changes later then.
    void takeForeignChanges();
    // Reports, once, that another program has changed the file and that this has not been merged yet.
    void lookAtFile();
    // Records the current file as a version, unless it is one already, so that rules which another program
    // removes before our first change can be restored.
    void keepPresentVersion();
    // True when the file differs from the one last read or written. One of many rules is not compared byte by
    // byte for that, as a change within the same time stamp would need; the next write does so.
    bool isFileAhead();

    // Reads the user's configuration again, like the store, and drops unwritten changes. With a background,
    // more than 5,000 rules are read by it, after what is being written, and unless that fails: the store
    // changes later then, and changes of the meantime stay.
    void reload();
    // Deletes the fail-safe file and the marker beside it; records the file in a separate journal first.
    void discardSuggestions();

    // Retries a failed write.
    void writeNow();
    // Also until what is being read has been taken over.
    void waitUntilWritten();
    // What another thread is doing for it; the observer's fileStateDidChange() follows each change of this.
    DocumentWork work() const { return m_work; }
    bool isWorking() const { return m_work != DocumentWork::none; }
    // True when the store has changes that the file does not.
    bool hasUnwrittenChanges() const { return !m_orders.empty() || m_lacksOrder; }
    // Why the last write failed; none after one that succeeded.
    const std::optional<std::string>& failure() const { return m_failure; }

    // For windows that show the versions.
    std::unique_ptr<history::Journal> openJournal() const { return m_file.openJournal(); }

private:
    WriteOrder orderFor(
        const ChangeReason& reason, std::shared_ptr<const rules::ChangeSet> change = nullptr) const;
    // False, with failure() saying so, when `work` has run out of memory.
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
    rules::ChangeSet applied(rules::ChangeSet change);
    void pump();
    std::chrono::milliseconds patience() const;
    void startWriting();
    void continueWith(platform::FileLock lock);
    void writeFirstOrder(platform::FileLock lock);
    bool isWorthAThread() const;
    void writeInBackground(platform::FileLock lock);
    void finish(const WriteReport& report);
    void dropFirstOrder();
    bool hasUntriedOrder() const;
    bool hasUnrecordedActions() const;
    void noteWritten(const WriteReport& report);
    void noteVersion(const WriteOrder& written, std::optional<std::int64_t> version);
    bool isStepUnderWay(std::uint64_t number) const;
    void fail(const std::string& message);
    void joinOrders();

    struct FoundFile;
    FoundFile lookAt(platform::FileLock& lock, rules::KnownFile known, ForeignMerge merge);
    FoundFile mergedFile(const rules::RulesFileText& text,
        const std::optional<std::vector<rules::RuleValue>>& inForce, ForeignMerge merge);
    bool bringStoreUpToDate(platform::FileLock& lock);
    bool settleVersions(std::chrono::milliseconds wait);
    void takeIn(const FoundFile& found);
    ForeignMerge mergeOf(const std::vector<rules::RuleValue>& theirs) const;
    void takeIn(const ForeignMerge& merge);
    void mergeInBackground(platform::FileLock lock);
    void takeFileOver();
    void mergePresentFile();
    enum class ReloadCause { foreignChange, ownWrite };
    void reloadAtOnce(ReloadCause cause);
    void reloadInBackground(ReloadCause cause);
    void finishReload(rules::PreparedReload& prepared, ReloadCause cause);
    void readRules();
    void noteFileRead();
    void makeSnapshotReady() const;
    void takeRestored();
    void announceReload();
    void recordForeignChange(std::size_t rulesBefore, std::function<std::size_t()> countLost);
    std::optional<std::int64_t> followingVersion() const;
    void reportMerge(const rules::ChangeSet& done, const std::vector<rules::MergeReport>& reports);

    bool step(ChangeReason::Kind kind);
    void takeStepsDue();
    void takeStep(ChangeReason::Kind kind);
    bool restoreNow(std::int64_t version);
    void reportUnreadable(std::int64_t version);
    enum class StepTime { atOnce, later }; // whether the operation that asks for a step is still running
    bool lockedStep(ChangeReason::Kind kind, StepTime time);
    bool chosenStep(ChangeReason::Kind kind, StepTime time);
    bool stepInJournal(const history::JournalVersion& version, ChangeReason::Kind kind, StepTime time);
    bool mergeStep(ForeignMerge& merge, const history::JournalVersion& version, ChangeReason::Kind kind);
    void performStep(const UndoSteps::Step& own, ChangeReason::Kind kind, StepTime time);
    void performStep(const ForeignMerge& merge, const history::JournalVersion& version,
        ChangeReason::Kind kind, StepTime time);
    void performStep(rules::ChangeSet change, const ChangeReason& reason, StepTime time);

    void warnOf(const UnwritableRules& unwritable);
    void inBackground(DocumentWork kind, std::function<void()> work, std::function<void()> then);
    void notify(const DocumentNews& news);
    void reportFile();

    rules::RuleManager& m_store;
    RunState& m_run;
    DocumentOwner m_owner;
    platform::Log& m_log;
    DocumentObserver* m_observer = nullptr;
    UserRulesFile m_file;

    rules::KnownFile m_knownFile; // as read or written last
    std::uint64_t m_knownReading = 0; // the store's ownFileReadings() at that time
    std::optional<rules::RulesSnapshot> m_rulesInFile; // none: those of the store
    std::deque<WriteOrder> m_orders; // done in the store, not yet in the file; the first may be in progress
    bool m_lacksOrder = false; // a change has no order: memory ran out for it, or it was dropped with another
    platform::FileLock m_lock; // held already for the next write
    DocumentWork m_work = DocumentWork::none;
    bool m_isReloadDue = false; // when the present work is done
    bool m_isLookDue = false; // at the file, the same
    std::deque<std::function<void()>> m_stepsDue; // undo, redo and restore, the same
    std::optional<std::string> m_failure;

    UndoSteps m_steps; // of this run, while no other program has changed the file
    std::uint64_t m_unwritableRules = 0; // as last reported
    std::optional<std::int64_t> m_knownVersion; // the last version of the journal that the user knows about
    bool m_hasReportedFile = false; // that it differs from the known one
};

} // namespace quorvane::workflow
