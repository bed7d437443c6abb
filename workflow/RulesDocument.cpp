#include "workflow/RulesDocument.h"

#include "platform/Log.h"
#include "rules/MergedChange.h"
#include "rules/RulesDiff.h"
#include "rules/RulesFile.h"
#include "rules/RulesText.h"
#include "workflow/DocumentTexts.h"
#include "workflow/FailSafeSuggestions.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace quorvane {

namespace {

constexpr const char* outOfMemory = "Out of memory"; // short enough for texts that need none

// Beyond this number of rules a write is worth a thread: below, it takes some ten milliseconds.
constexpr std::size_t mostWrittenAtOnce = 20'000;

// Steps to go back without asking the journal; each may hold a great many rules.
constexpr std::size_t mostRememberedSteps = 50;

std::vector<RuleValue> valuesOf(const RulesSnapshot& snapshot)
{
    std::vector<RuleValue> values;
    values.reserve(snapshot.size());
    snapshot.forEach([&values](const RuleValue& value) { values.push_back(value); });
    return values;
}

} // namespace

RulesDocument::RulesDocument(RuleManager& store, RunState& run, DocumentOwner owner, Log& log)
    : m_store(store)
    , m_run(run)
    , m_owner(std::move(owner))
    , m_log(log)
    , m_file(store.locations(), m_owner.program, m_owner.stateFolder, log)
{
    m_file.setLimits(m_owner.settings.history);
    noteFileRead();
}

RulesDocument::~RulesDocument()
{
    waitUntilWritten();
}

void RulesDocument::setSettings(const ProgramSettings& settings)
{
    waitUntilWritten();
    m_owner.settings = settings;
    m_file.setLimits(settings.history);
}

// --- Changes

// Rules of which an equal one stays, or was there before, make no difference.
ChangeCounts RulesDocument::countsOf(const ChangeSet& done) const
{
    std::vector<RuleValue> before;
    std::vector<RuleValue> after;
    for (const ChangeSet::Removal& removal : done.removed)
        before.push_back(removal.value);
    for (const ChangeSet::Change& change : done.changed) {
        before.push_back(change.before);
        after.push_back(change.after);
    }
    for (const ChangeSet::Addition& addition : done.added)
        after.push_back(addition.value);
    const RulesDifference difference = rulesDifference(before, after);
    return {difference.added.size(), difference.removed.size(), difference.changed.size()};
}

ChangeResult RulesDocument::perform(const ChangeSet& change, const ChangeReason& reason)
{
    ChangeResult result;
    attempt([&] {
        begin();
        markChanged();
        result = commit(applied(change), reason);
    });
    result.failure = m_failure;
    return result;
}

// The store does all of it or, without memory, nothing.
ChangeSet RulesDocument::applied(const ChangeSet& change)
{
    ChangeSet done = m_store.apply(change);
    if (done.isEmpty() && !change.isEmpty() && m_store.lastErrorMessage() == outOfMemory)
        throw std::bad_alloc();
    return done;
}

// False, and the failure says so, when `work` has run out of memory.
template <class Work> bool RulesDocument::attempt(Work work)
{
    try {
        work();
        return true;
    } catch (const std::bad_alloc&) {
        fail(outOfMemory);
        return false;
    }
}

void RulesDocument::begin()
{
    if (m_knownReading != m_store.ownFileReadings())
        noteFileRead();
    if (!m_rulesInFile)
        m_rulesInFile = m_store.userRulesSnapshot();
}

ChangeResult RulesDocument::commit(ChangeSet done, const ChangeReason& reason)
{
    m_lacksOrder = !attempt([&] {
        begin();
        rememberStep(done, reason);
        m_orders.push_back(orderFor(countsOf(done), reason));
    });
    if (!m_lacksOrder)
        pump();
    return {std::move(done), m_failure};
}

WriteOrder RulesDocument::orderFor(const ChangeCounts& counts, const ChangeReason& reason) const
{
    WriteOrder order;
    order.rules = m_store.userRulesSnapshot();
    order.reason = reason;
    order.counts = counts;
    order.wholeLines = m_owner.settings.wholeLines;
    order.step = m_lastStep;
    if (const auto& unread = m_store.unreadRules())
        order.unreadReason = unread->reason;
    return order;
}

// --- Writing

void RulesDocument::pump()
{
    attempt([this] { startWriting(); });
}

void RulesDocument::startWriting()
{
    if (m_isWriting)
        return;
    if (m_failure)
        joinOrders();
    if (m_orders.empty())
        return;
    FileLock lock
        = m_file.lock(m_owner.background == nullptr ? m_owner.lockTimeout : std::chrono::seconds(0));
    if (!lock.isHeldByAnother() || m_owner.background == nullptr) {
        continueWith(std::move(lock));
        return;
    }
    // Another program writes at this moment. A window does not wait for it.
    auto later = std::make_shared<FileLock>();
    inBackground([this, later] { *later = m_file.lock(m_owner.lockTimeout); },
        [this, later] { continueWith(std::move(*later)); });
}

void RulesDocument::continueWith(FileLock lock)
{
    if (!lock.isHeld()) {
        fail(unwritableMessage(m_file.path(), lock));
        return;
    }
    bringStoreUpToDate(lock);
    m_run.internalWrite = true;
    if (m_orders.empty())
        return;
    if (m_owner.background != nullptr && m_orders.front().rules.size() > mostWrittenAtOnce)
        return writeInBackground(std::move(lock));
    const WriteReport report = m_file.write(m_orders.front(), lock);
    lock = FileLock();
    finish(report);
}

void RulesDocument::writeInBackground(FileLock lock)
{
    ++m_run.writesUnderWay;
    auto report = std::make_shared<WriteReport>();
    auto held = std::make_shared<FileLock>(std::move(lock));
    inBackground(
        [this, report, held, order = m_orders.front()] {
            *report = m_file.write(order, *held);
            *held = FileLock();
        },
        [this, report] {
            --m_run.writesUnderWay;
            finish(*report);
        });
}

// With the lock held: a write that was cut short is settled, and what others have written since comes into
// the store. False when the file does not hold the rules in force.
bool RulesDocument::bringStoreUpToDate(FileLock& lock)
{
    const UserRulesFile::Recovery recovery = m_file.recover(lock);
    for (const DocumentNews& news : recovery.news)
        tell(news);
    if (isFileAhead() || recovery.rules)
        takeIn(RulesFileText::read(m_file.path(), lock), recovery.rules);
    return !recovery.rules;
}

// `inForce`: the rules that count in place of those that the file holds.
void RulesDocument::takeIn(const RulesFileText& theirs, const std::optional<std::vector<RuleValue>>& inForce)
{
    for (WriteOrder& order : m_orders)
        order.unreadReason = theirs.unreadReason();
    if (theirs.unreadReason() && !inForce)
        return;
    m_hasToldOfFile = false;
    if (inForce) {
        mergeWith(*inForce);
    } else if (theirs.identity() && theirs.identity()->isMissing()) {
        m_rulesInFile
            .emplace(); // rules whose file is gone are not deleted rules: the next write brings it back
    } else {
        mergeWith(rulesOfText(theirs.text()));
    }
    // Once they are in the store, lest they are taken for known where there was no memory for them.
    m_knownFile = theirs.unreadReason() ? KnownFile() : KnownFile::of(m_file.path(), theirs);
    if (!theirs.unreadReason())
        m_store.forgetUnreadRules(); // whatever was not read is no longer there, or is read now
}

void RulesDocument::mergeWith(const std::vector<RuleValue>& theirs)
{
    const std::vector<RuleRef> ours = m_store.userRules();
    const std::vector<RuleValue> base
        = m_rulesInFile ? valuesOf(*m_rulesInFile) : valuesOf(m_store.userRulesSnapshot());
    const MergeResult merged = mergeRules(base, valuesOf(m_store.userRulesSnapshot()), theirs);
    const ChangeSet done = applied(changeTo(merged, ours));
    if (m_observer != nullptr)
        m_observer->rulesWereMerged(done);
    tellOfMerge(done, merged.reports);
    m_rulesInFile = RulesSnapshot(theirs);
    forgetSteps();
    joinOrders();
}

// One write for all that is not written yet, of the rules as they are now.
void RulesDocument::joinOrders()
{
    if (m_lacksOrder)
        m_orders.push_back(orderFor({}, {.action = "Change Rules"}));
    m_lacksOrder = false;
    if (m_orders.empty())
        return;
    WriteOrder order = m_orders.back();
    order.rules = m_store.userRulesSnapshot();
    order.counts = {};
    for (const WriteOrder& each : m_orders)
        order.counts += each.counts;
    m_orders.assign(1, std::move(order));
}

void RulesDocument::finish(const WriteReport& report)
{
    m_run.internalWrite = true;
    m_store.setLastErrorMessage(report.message);
    for (const DocumentNews& news : report.news)
        tell(news);
    if (!report.isWritten || report.message) {
        fail(report.message.value_or("The rules file '" + m_file.path() + "' could not be written"));
        return;
    }
    noteWritten(report);
    tellOfUnwritableRules(report.unwritableRules);
    pump();
    tellOfFile();
}

void RulesDocument::noteWritten(const WriteReport& report)
{
    m_failure.reset();
    m_knownFile = report.known;
    m_hasToldOfFile = false;
    if (report.version)
        m_knownVersion = report.version;
    if (m_orders.front().unreadReason)
        m_store.forgetUnreadRules();
    const auto written = std::find_if(m_steps.begin(), m_steps.end(),
        [&](const Step& each) { return each.number == m_orders.front().step; });
    if (written != m_steps.end() && written->reason.kind == ChangeReason::Kind::action)
        written->version = report.version;
    const bool wasRestored = m_orders.front().restores.has_value();
    m_rulesInFile = report.readAs ? RulesSnapshot(*report.readAs) : m_orders.front().rules;
    m_orders.pop_front();
    if (wasRestored)
        takeRestored();
    else if (m_orders.empty() && !report.readAs)
        m_rulesInFile.reset(); // they are the store's
}

// The store follows the bytes that were brought back.
void RulesDocument::takeRestored()
{
    m_store.reloadCurrentUserConfiguration();
    m_store.rebuildRulesCache();
    m_rulesInFile.reset();
    if (m_observer != nullptr)
        m_observer->rulesWereReloaded();
}

void RulesDocument::fail(const std::string& message)
{
    m_failure = message;
    m_store.setLastErrorMessage(message);
    tellOfFile();
}

void RulesDocument::writeNow()
{
    if (m_isWriting)
        return; // the first order is being carried out
    attempt([this] {
        joinOrders();
        if (m_orders.empty())
            m_failure.reset(); // what failed has left nothing to write
        startWriting();
    });
    tellOfFile();
}

void RulesDocument::waitUntilWritten()
{
    while (m_isWriting && m_owner.background != nullptr)
        m_owner.background->wait();
}

// --- What others write

bool RulesDocument::isFileAhead() const
{
    return !m_knownFile.isStillThere();
}

void RulesDocument::recover()
{
    attempt([this] {
        if (m_file.mayBeUnderWay())
            settleVersions(m_owner.lockTimeout);
    });
}

// False when another program holds the lock: then it may be at work on that very version.
bool RulesDocument::settleVersions(std::chrono::milliseconds wait)
{
    FileLock lock = m_file.lock(wait);
    if (!lock.isHeld())
        return false;
    const bool isInFile = bringStoreUpToDate(lock);
    lock = FileLock();
    if (!m_orders.empty())
        return true;
    if (isInFile) {
        m_rulesInFile.reset();
        return true;
    }
    m_orders.push_back(orderFor({}, {.action = "Complete Interrupted Change"}));
    pump();
    return true;
}

void RulesDocument::takeForeignChanges()
{
    attempt([this] { takeFileOver(); });
}

void RulesDocument::takeFileOver()
{
    if (m_isWriting || !isFileAhead())
        return; // what is being written is compared before the next write
    if (!m_orders.empty())
        return writeNow(); // which takes them in first
    if (m_file.mayBeUnderWay() && settleVersions(std::chrono::milliseconds(0)))
        return;
    if (m_rulesInFile) // the store holds what the file cannot
        return takeIn(RulesFileText::read(m_file.path()), {});
    const std::vector<RuleRef> before = m_store.userRules();
    reload();
    forgetSteps();
    if (m_observer != nullptr)
        m_observer->rulesWereReloaded();
    tellOfReload(before);
}

void RulesDocument::reload()
{
    m_store.reloadCurrentUserConfiguration();
    m_store.rebuildRulesCache();
    noteFileRead();
}

void RulesDocument::discardSuggestions()
{
    keepSuggestions(m_store.locations(), m_owner.stateFolder, m_owner.settings.history, m_log);
    quorvane::discardSuggestions(m_store.locations());
}

void RulesDocument::noteFileRead()
{
    m_hasToldOfFile = false;
    m_knownFile = m_store.ownFile();
    m_knownReading = m_store.ownFileReadings();
    m_rulesInFile.reset();
    if (!m_knownFile.identity || m_knownFile.path != m_file.path()) {
        m_knownFile = {}; // whatever rules there are, they are not from the user's file
        m_rulesInFile.emplace();
    }
}

// --- Back and forth

void RulesDocument::rememberStep(const ChangeSet& done, const ChangeReason& reason)
{
    if (done.isEmpty())
        return;
    Step step{.number = ++m_lastStep, .done = done, .reason = reason, .version = reason.of};
    if (reason.kind == ChangeReason::Kind::undo) {
        if (!m_steps.empty())
            m_steps.pop_back();
        m_undone.push_back(std::move(step));
        return;
    }
    if (reason.kind == ChangeReason::Kind::redo) {
        if (!m_undone.empty())
            m_undone.pop_back();
    } else {
        m_undone.clear();
    }
    m_steps.push_back(std::move(step));
    if (m_steps.size() > mostRememberedSteps)
        m_steps.erase(m_steps.begin());
}

void RulesDocument::forgetSteps()
{
    m_steps.clear();
    m_undone.clear();
}

bool RulesDocument::undo()
{
    bool isDone = false;
    attempt([&] { isDone = step(ChangeReason::Kind::undo); });
    return isDone;
}

bool RulesDocument::redo()
{
    bool isDone = false;
    attempt([&] { isDone = step(ChangeReason::Kind::redo); });
    return isDone;
}

bool RulesDocument::step(ChangeReason::Kind kind)
{
    waitUntilWritten();
    takeForeignChanges();
    const bool isUndo = kind == ChangeReason::Kind::undo;
    const auto version = isUndo ? m_file.journal().undoable() : m_file.journal().redoable();
    const std::vector<Step>& steps = isUndo ? m_steps : m_undone;
    const bool isOwn = !steps.empty()
        && (version ? steps.back().version == version->number : m_file.journal().problem().has_value());
    ChangeReason reason{.kind = kind};
    ChangeSet change;
    if (isOwn) {
        reason.action = steps.back().reason.action;
        reason.of = steps.back().version;
        change = steps.back().done.inverted();
    } else {
        auto journalled = version ? journalledStep(*version, kind) : std::nullopt;
        if (!journalled)
            return false;
        forgetSteps();
        reason.action = version->action.value_or(std::string());
        reason.of = version->number;
        change = std::move(*journalled);
    }
    perform(change, reason);
    return true;
}

// What takes a version of the journal back, or does it again, in the present rules.
std::optional<ChangeSet> RulesDocument::journalledStep(const JournalVersion& version, ChangeReason::Kind kind)
{
    const auto after = m_file.journal().meantOf(version.number);
    const auto before
        = version.before ? m_file.journal().meantOf(*version.before) : std::optional<std::string>("");
    if (!before || !after)
        return std::nullopt;
    const std::vector<RuleRef> present = m_store.userRules();
    const bool isUndo = kind == ChangeReason::Kind::undo;
    return changeTo(mergeRules(rulesOfText(isUndo ? *after : *before), valuesOf(m_store.userRulesSnapshot()),
                        rulesOfText(isUndo ? *before : *after), Placement::startOfKind),
        present);
}

std::optional<std::string> RulesDocument::undoName()
{
    if (!m_steps.empty())
        return m_steps.back().reason.action;
    const auto version = m_isWriting ? std::nullopt : m_file.journal().undoable();
    return version ? version->action : std::nullopt;
}

std::optional<std::string> RulesDocument::redoName()
{
    if (!m_undone.empty())
        return m_undone.back().reason.action;
    const auto version = m_isWriting ? std::nullopt : m_file.journal().redoable();
    return version ? version->action : std::nullopt;
}

bool RulesDocument::restore(std::int64_t version)
{
    waitUntilWritten();
    if (!m_file.journal().bytesOf(version))
        return false;
    begin();
    markChanged();
    forgetSteps();
    WriteOrder order = orderFor({}, {.action = "Restore Version " + std::to_string(version)});
    order.restores = version;
    m_orders.push_back(std::move(order));
    pump();
    return true;
}

void RulesDocument::inBackground(std::function<void()> work, std::function<void()> then)
{
    if (m_owner.background == nullptr) {
        work();
        then();
        return;
    }
    m_isWriting = true;
    auto hasRoom = std::make_shared<bool>(true);
    const auto workWithRoom = [hasRoom, work = std::move(work)] {
        try {
            work();
        } catch (const std::bad_alloc&) {
            *hasRoom = false;
        }
    };
    m_owner.background->run(workWithRoom, [this, hasRoom, then = std::move(then)] {
        m_isWriting = false;
        attempt([&] {
            then();
            if (!*hasRoom)
                throw std::bad_alloc();
            startWriting();
        });
        tellOfFile();
    });
    tellOfFile();
}

} // namespace quorvane
