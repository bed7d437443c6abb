#include "workflow/RulesDocument.h"

#include "rules/MergedChange.h"
#include "rules/RulesFile.h"
#include "rules/RulesText.h"

#include <optional>
#include <utility>
#include <vector>

// How a document merges changes of the file by other programs and earlier runs.

namespace quorvane::workflow {

// Requires the lock. Completes an interrupted write and merges what others have written since into the store.
// False when the file does not contain the rules in force.
bool RulesDocument::bringStoreUpToDate(platform::FileLock& lock)
{
    const UserRulesFile::Recovery recovery = m_file.recover(lock);
    for (const DocumentNews& news : recovery.news)
        notify(news);
    if (isFileAhead() || recovery.rules)
        takeIn(rules::RulesFileText::read(m_file.path(), lock), recovery.rules);
    return !recovery.rules;
}

// `inForce`: the rules that count instead of those in the file.
void RulesDocument::takeIn(
    const rules::RulesFileText& theirs, const std::optional<std::vector<rules::RuleValue>>& inForce)
{
    for (WriteOrder& order : m_orders)
        order.unreadReason = theirs.unreadReason();
    if (theirs.unreadReason() && !inForce)
        return;
    m_hasReportedFile = false;
    if (inForce) {
        mergeWith(*inForce);
    } else if (theirs.identity() && theirs.identity()->isMissing()) {
        m_rulesInFile.emplace(); // a missing file does not mean deleted rules: the next write restores it
    } else {
        mergeWith(rules::rulesOfText(theirs.text()));
    }
    // Set only when they are in the store, so that running out of memory does not make them count as known.
    m_knownFile = theirs.unreadReason() ? rules::KnownFile() : rules::KnownFile::of(m_file.path(), theirs);
    if (!theirs.unreadReason())
        m_store.forgetUnreadRules(); // rules not read before are gone or have been read now
}

void RulesDocument::mergeWith(const std::vector<rules::RuleValue>& theirs)
{
    const std::vector<rules::RuleRef> ours = m_store.userRules();
    const std::vector<rules::RuleValue> base
        = m_rulesInFile ? m_rulesInFile->values() : m_store.userRulesSnapshot().values();
    const rules::MergeResult merged = mergeRules(base, m_store.userRulesSnapshot().values(), theirs);
    const rules::ChangeSet done = applied(changeTo(merged, ours));
    if (m_observer != nullptr)
        m_observer->rulesWereMerged(done);
    reportMerge(done, merged.reports);
    m_rulesInFile = rules::RulesSnapshot(theirs);
    forgetSteps();
    joinOrders();
}

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
        return; // the file is compared again before the next write
    if (!m_orders.empty())
        return writeNow(); // which merges them first
    if (m_file.mayBeUnderWay() && settleVersions(std::chrono::milliseconds(0)))
        return;
    if (m_rulesInFile) // the store has rules that the file cannot represent
        return takeIn(rules::RulesFileText::read(m_file.path()), {});
    const std::vector<rules::RuleRef> before = m_store.userRules();
    reload();
    forgetSteps();
    if (m_observer != nullptr)
        m_observer->rulesWereReloaded();
    reportReload(before);
}

void RulesDocument::reload()
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
