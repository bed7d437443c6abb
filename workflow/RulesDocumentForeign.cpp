#include "workflow/RulesDocument.h"

#include "rules/AddressSet.h"
#include "rules/PreparedReload.h"
#include "rules/RulesFile.h"
#include "rules/RulesText.h"
#include "workflow/ForeignMerge.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// How a document merges changes of the file by other programs and earlier runs.

namespace quorvane::workflow {

namespace {

std::size_t countOfMissing(
    const std::vector<rules::RuleRef>& before, const std::vector<rules::RuleRef>& after)
{
    rules::AddressSet present(after.size());
    for (const rules::RuleRef& rule : after)
        present.insert(addressOf(rule));
    return static_cast<std::size_t>(std::count_if(before.begin(), before.end(),
        [&](const rules::RuleRef& rule) { return !present.contains(addressOf(rule)); }));
}

// What has come and gone: a rule that only moves is removed and added again.
rules::ChangeSet withoutMoves(rules::ChangeSet change)
{
    rules::AddressSet removed(change.removed.size());
    for (const rules::ChangeSet::Removal& removal : change.removed)
        removed.insert(addressOf(removal.rule));
    rules::AddressSet moved;
    std::erase_if(change.added, [&](const rules::ChangeSet::Addition& addition) {
        return removed.contains(addressOf(addition.rule)) && moved.insert(addressOf(addition.rule));
    });
    std::erase_if(change.removed,
        [&](const rules::ChangeSet::Removal& removal) { return moved.contains(addressOf(removal.rule)); });
    return change;
}

} // namespace

// What the file held when it was looked at, and the merge with it, which has run.
struct RulesDocument::FoundFile {
    UserRulesFile::Recovery recovery{};
    bool isAhead = false; // it is not the known one; the rest says what it is
    std::optional<std::string> unreadReason{};
    rules::KnownFile known{};
    std::optional<ForeignMerge> merge{}; // none: there are no rules to merge
};

// Requires the lock. Completes an interrupted write, and merges what others have written since. Any thread;
// takeIn() changes the store.
RulesDocument::FoundFile RulesDocument::lookAt(
    platform::FileLock& lock, rules::KnownFile known, ForeignMerge merge)
{
    UserRulesFile::Recovery recovery = m_file.recover(lock);
    if (!recovery.rules && known.isStillThere())
        return {.recovery = std::move(recovery)};
    FoundFile found
        = mergedFile(rules::RulesFileText::read(m_file.path(), lock), recovery.rules, std::move(merge));
    found.recovery = std::move(recovery);
    return found;
}

// `inForce`: the rules that count instead of those in the file.
RulesDocument::FoundFile RulesDocument::mergedFile(const rules::RulesFileText& text,
    const std::optional<std::vector<rules::RuleValue>>& inForce, ForeignMerge merge)
{
    FoundFile found{.isAhead = true, .unreadReason = text.unreadReason()};
    const bool isMissing = text.identity() && text.identity()->isMissing();
    if (!found.unreadReason)
        found.known = rules::KnownFile::of(m_file.path(), text);
    if (!inForce && (found.unreadReason || isMissing))
        return found;
    if (inForce)
        merge.run(*inForce, ForeignMerge::Order::ours);
    else
        merge.run(rules::rulesOfText(text.text()), ForeignMerge::Order::theirs);
    found.merge = std::move(merge);
    return found;
}

// Requires the lock. False when the file does not contain the rules in force.
bool RulesDocument::bringStoreUpToDate(platform::FileLock& lock)
{
    const FoundFile found = lookAt(lock, m_knownFile, ForeignMerge(m_store, m_rulesInFile));
    takeIn(found);
    return !found.recovery.rules;
}

void RulesDocument::takeIn(const FoundFile& found)
{
    for (const DocumentNews& news : found.recovery.news)
        notify(news);
    if (!found.isAhead)
        return;
    for (WriteOrder& order : m_orders)
        order.unreadReason = found.unreadReason;
    if (found.unreadReason && !found.merge)
        return;
    m_hasReportedFile = false;
    if (found.merge && found.merge->isFor(m_store))
        takeIn(*found.merge);
    else if (found.merge) // rules have changed while it ran
        takeIn(mergeOf(found.merge->theirs().values()));
    else
        m_rulesInFile.emplace(); // a missing file does not mean deleted rules: the next write restores it
    // Set only when they are in the store, so that running out of memory does not make them count as known.
    m_knownFile = found.known;
    if (!found.unreadReason)
        m_store.forgetUnreadRules(); // rules not read before are gone or have been read now
}

ForeignMerge RulesDocument::mergeOf(const std::vector<rules::RuleValue>& theirs) const
{
    ForeignMerge merge(m_store, m_rulesInFile);
    merge.run(theirs, ForeignMerge::Order::ours);
    return merge;
}

void RulesDocument::takeIn(const ForeignMerge& merge)
{
    const rules::ChangeSet done = applied(merge.change());
    if (m_observer != nullptr)
        m_observer->rulesWereMerged(done);
    reportMerge(withoutMoves(done), merge.reports());
    m_rulesInFile = merge.theirs();
    forgetSteps();
    joinOrders();
}

void RulesDocument::mergeInBackground(platform::FileLock lock)
{
    ++m_run.writesUnderWay; // an interrupted write may be completed
    auto held = std::make_shared<platform::FileLock>(std::move(lock));
    auto found = std::make_shared<std::optional<FoundFile>>();
    inBackground(
        DocumentWork::writing,
        [this, held, found, known = m_knownFile, merge = ForeignMerge(m_store, m_rulesInFile)] {
            *found = lookAt(*held, known, merge);
        },
        [this, held, found] {
            --m_run.writesUnderWay;
            if (!*found)
                throw std::bad_alloc();
            takeIn(**found);
            writeFirstOrder(std::move(*held));
        });
}

bool RulesDocument::isFileAhead()
{
    if (!isWorthAThread())
        return !m_knownFile.isStillThere();
    rules::KnownFile byItsTimes = m_knownFile;
    byItsTimes.hash.reset();
    return !byItsTimes.isStillThere();
}

void RulesDocument::recover()
{
    attempt([this] {
        if (m_file.mayBeUnderWay())
            settleVersions(m_owner.lockTimeout);
    });
}

// False when another process holds the lock: it may be writing that version.
bool RulesDocument::settleVersions(std::chrono::milliseconds wait)
{
    platform::FileLock lock = m_file.lock(wait);
    if (!lock.isHeld())
        return false;
    const bool isInFile = bringStoreUpToDate(lock);
    lock = platform::FileLock();
    if (!m_orders.empty())
        return true;
    if (isInFile) {
        m_rulesInFile.reset();
        return true;
    }
    WriteOrder order = orderFor({.action = "Complete Interrupted Change"});
    order.completes = true;
    m_orders.push_back(std::move(order));
    pump();
    return true;
}

void RulesDocument::takeForeignChanges()
{
    attempt([this] { takeFileOver(); });
}

void RulesDocument::takeFileOver()
{
    m_isLookDue = isWorking();
    if (isWorking() || !isFileAhead())
        return;
    if (!m_orders.empty())
        return writeNow(); // which merges them first
    if (m_file.mayBeUnderWay() && settleVersions(std::chrono::milliseconds(0)))
        return;
    if (m_rulesInFile)
        mergePresentFile();
    else if (isWorthAThread())
        reloadInBackground(ReloadCause::foreignChange);
    else
        reloadAtOnce(ReloadCause::foreignChange);
}

// For rules that the file cannot represent, or that are not committed yet: a reload would drop them.
void RulesDocument::mergePresentFile()
{
    ForeignMerge merge(m_store, m_rulesInFile);
    const auto read = [this, merge = std::move(merge)] {
        return mergedFile(rules::RulesFileText::read(m_file.path()), std::nullopt, merge);
    };
    if (!isWorthAThread())
        return takeIn(read());
    const auto found = std::make_shared<std::optional<FoundFile>>();
    inBackground(
        DocumentWork::reading, [found, read] { *found = read(); },
        [this, found] {
            if (!*found)
                throw std::bad_alloc();
            takeIn(**found);
            freeInBackground(*m_owner.background, std::make_shared<FoundFile>(std::move(**found)));
        });
}

void RulesDocument::reloadAtOnce(ReloadCause cause)
{
    if (cause == ReloadCause::ownWrite) {
        readRules();
        return announceReload();
    }
    const std::vector<rules::RuleRef> before = m_store.userRules();
    readRules();
    forgetSteps();
    announceReload();
    recordForeignChange(
        before.size(), [before, after = m_store.userRules()] { return countOfMissing(before, after); });
}

// The store is in use meanwhile. When its rules change, those in the file are merged into them instead.
void RulesDocument::reloadInBackground(ReloadCause cause)
{
    const auto prepared = std::make_shared<std::unique_ptr<rules::PreparedReload>>(m_store.prepareReload());
    if (!*prepared)
        throw std::bad_alloc();
    inBackground(
        DocumentWork::reading, [prepared] { (*prepared)->run(); },
        [this, prepared, cause] {
            finishReload(**prepared, cause);
            freeInBackground(*m_owner.background, std::shared_ptr(std::move(*prepared)));
        });
}

void RulesDocument::finishReload(rules::PreparedReload& prepared, ReloadCause cause)
{
    if (m_store.finishReload(prepared)) {
        noteFileRead();
        if (cause == ReloadCause::foreignChange)
            forgetSteps();
        announceReload();
        if (cause == ReloadCause::foreignChange)
            recordForeignChange(
                prepared.from().count(false), [lost = prepared.lostUserRules()] { return lost; });
    } else if (!m_orders.empty()) {
        return; // the file is merged before they are written
    } else if (m_store.hasExactly(prepared.from())) {
        reloadAtOnce(cause);
    } else {
        mergePresentFile();
    }
}

void RulesDocument::reload()
{
    m_isReloadDue = isWorking();
    if (isWorking())
        return;
    if (isWorthAThread())
        attempt([this] { reloadInBackground(ReloadCause::ownWrite); });
    else
        readRules();
}

void RulesDocument::readRules()
{
    m_store.reloadCurrentUserConfiguration();
    m_store.rebuildRulesCache();
    noteFileRead();
}

void RulesDocument::noteFileRead()
{
    m_hasReportedFile = false;
    m_knownFile = m_store.ownFile();
    m_knownReading = m_store.ownFileReadings();
    m_rulesInFile.reset();
    if (!m_knownFile.identity || m_knownFile.path != m_file.path()) {
        m_knownFile = {}; // the rules are not from the user's file
        m_rulesInFile.emplace();
    }
    makeSnapshotReady();
}

// The first snapshot visits every rule. After reading them, which took far longer, it goes unnoticed; the
// first change would have to wait for it.
void RulesDocument::makeSnapshotReady() const
{
    try {
        m_store.userRulesSnapshot();
    } catch (const std::bad_alloc&) {
        return; // it is made when needed, or the failure is reported then
    }
}

} // namespace quorvane::workflow
