#include "workflow/RulesDocument.h"

#include "platform/FileLock.h"
#include "rules/RulesText.h"
#include "workflow/DocumentTexts.h"
#include "workflow/ForeignMerge.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

// How a document undoes, redoes and restores.

namespace quorvane::workflow {

namespace {

struct ReleaseAtEnd {
    platform::FileLock& lock;

    ~ReleaseAtEnd() { lock = platform::FileLock(); }
};

} // namespace

void RulesDocument::forgetSteps()
{
    m_steps.forget();
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

// True while another thread writes what the action has done, or has still to write it; also when it was
// undone or redone since. Nothing in the journal is newer then.
bool RulesDocument::isStepUnderWay(std::uint64_t number) const
{
    return isWorking() && std::any_of(m_orders.begin(), m_orders.end(), [number](const WriteOrder& order) {
        return order.step == number;
    });
}

bool RulesDocument::step(ChangeReason::Kind kind)
{
    const UndoSteps::Step* own = kind == ChangeReason::Kind::undo ? m_steps.toUndo() : m_steps.toRedo();
    if (m_stepsDue.empty() && own != nullptr && isStepUnderWay(own->number)) {
        performStep(*own, kind, StepTime::atOnce);
        return true;
    }
    if (!isWorking())
        takeFileOver();
    if (!isWorking())
        return lockedStep(kind, StepTime::atOnce);
    m_stepsDue.push_back([this, kind] { takeStep(kind); }); // the window does not wait
    return true;
}

// Goes on with what was asked for while there was other work.
void RulesDocument::takeStepsDue()
{
    while (!isWorking() && !m_stepsDue.empty()) {
        takeFileOver();
        if (isWorking())
            return;
        const std::function<void()> step = std::move(m_stepsDue.front());
        m_stepsDue.pop_front();
        step();
    }
}

void RulesDocument::takeStep(ChangeReason::Kind kind)
{
    if (lockedStep(kind, StepTime::later))
        return;
    const bool isUndo = kind == ChangeReason::Kind::undo;
    notify({.kind = DocumentNews::Kind::journal,
        .text = isUndo ? "There is nothing to undo." : "There is nothing to redo."});
}

bool RulesDocument::lockedStep(ChangeReason::Kind kind, StepTime time)
{
    if (isWorthAThread() || hasUnrecordedActions())
        return chosenStep(kind, time);
    // Held from the choice of the action to the end of the write, so that no two programs undo the same one.
    const ReleaseAtEnd release{m_lock};
    m_lock = m_file.lock(patience());
    if (m_lock.isHeld()) {
        bringStoreUpToDate(m_lock);
    } else if (m_lock.isHeldByAnother() && m_owner.background == nullptr) {
        fail(unwritableMessage(m_file.path(), m_lock));
        return true;
    }
    return chosenStep(kind, time);
}

bool RulesDocument::chosenStep(ChangeReason::Kind kind, StepTime time)
{
    const bool isUndo = kind == ChangeReason::Kind::undo;
    const UndoSteps::Step* own = isUndo ? m_steps.toUndo() : m_steps.toRedo();
    const bool areStepsNewer = hasUnrecordedActions(); // than all versions
    const auto version = areStepsNewer ? std::nullopt
        : isUndo                       ? m_file.journal().undoable()
                                       : m_file.journal().redoable();
    if (auto notice = m_file.journal().takeNotice())
        notify({.kind = DocumentNews::Kind::journal, .text = std::move(*notice)});
    const bool isOwn = own != nullptr
        && (version ? own->version == version->number
                    : areStepsNewer || m_file.journal().problem().has_value());
    if (!isOwn)
        return version && stepInJournal(*version, kind, time);
    performStep(*own, kind, time);
    return true;
}

void RulesDocument::performStep(const UndoSteps::Step& own, ChangeReason::Kind kind, StepTime time)
{
    const ChangeReason reason{
        .action = own.reason.action, .kind = kind, .of = own.version, .refusesCuts = m_owner.undoRefusesCuts};
    performStep(own.done->inverted(), reason, time);
}

void RulesDocument::performStep(rules::ChangeSet change, const ChangeReason& reason, StepTime time)
{
    if (time == StepTime::atOnce) {
        perform(std::move(change), reason);
        return;
    }
    perform(change, reason);
    if (m_observer != nullptr)
        m_observer->rulesWereMerged(change);
}

// Undoes or redoes a version of the journal in the current rules. Many are merged by another thread.
bool RulesDocument::stepInJournal(
    const history::JournalVersion& version, ChangeReason::Kind kind, StepTime time)
{
    const auto merge = std::make_shared<ForeignMerge>(m_store, std::nullopt);
    if (!isWorthAThread()) {
        const bool isReadable = mergeStep(*merge, version, kind);
        if (isReadable)
            performStep(*merge, version, kind, time);
        return isReadable;
    }
    const auto isReadable = std::make_shared<std::optional<bool>>();
    inBackground(
        DocumentWork::readingHistory,
        [this, merge, isReadable, version, kind] { *isReadable = mergeStep(*merge, version, kind); },
        [this, merge, isReadable, version, kind] {
            if (!isReadable->has_value())
                throw std::bad_alloc();
            if (!**isReadable)
                reportUnreadable(version.number);
            else if (!merge->isFor(m_store)) // rules have changed while it ran
                stepInJournal(version, kind, StepTime::later);
            else
                performStep(*merge, version, kind, StepTime::later);
        });
    return true;
}

// False when contents of the journal cannot be read. Any thread.
bool RulesDocument::mergeStep(
    ForeignMerge& merge, const history::JournalVersion& version, ChangeReason::Kind kind)
{
    const bool isUndo = kind == ChangeReason::Kind::undo;
    const std::optional<std::int64_t> from = isUndo ? version.number : version.before;
    const std::optional<std::int64_t> to = isUndo ? version.before : version.number;
    // As it reads, like the present file: rules lost to a cut line would look removed by another program.
    const auto base = from ? m_file.journal().bytesOf(*from) : std::optional<std::string>("");
    const auto target = to ? m_file.journal().meantOf(*to) : std::optional<std::string>("");
    if (!base || !target)
        return false;
    merge.repeat(rules::rulesOfText(*base), rules::rulesOfText(*target));
    return true;
}

void RulesDocument::performStep(
    const ForeignMerge& merge, const history::JournalVersion& version, ChangeReason::Kind kind, StepTime time)
{
    forgetSteps();
    performStep(merge.change(),
        {.action = version.action.value_or(std::string()),
            .kind = kind,
            .of = version.number,
            .refusesCuts = m_owner.undoRefusesCuts},
        time);
    if (!merge.reports().empty())
        notify({.kind = DocumentNews::Kind::conflict, .text = mergeText({}, merge.reports())});
}

bool RulesDocument::isFileAsWeLeftIt()
{
    return m_file.isAsWeLeftIt(m_owner.lockTimeout);
}

std::optional<std::string> RulesDocument::undoName()
{
    if (!m_stepsDue.empty())
        return std::nullopt;
    if (const UndoSteps::Step* step = m_steps.toUndo())
        return step->reason.action;
    const auto version = isWorking() || hasUnrecordedActions() ? std::nullopt : m_file.journal().undoable();
    return version ? version->action : std::nullopt;
}

std::optional<std::string> RulesDocument::redoName()
{
    if (!m_stepsDue.empty())
        return std::nullopt;
    if (const UndoSteps::Step* step = m_steps.toRedo())
        return step->reason.action;
    const auto version = isWorking() || hasUnrecordedActions() ? std::nullopt : m_file.journal().redoable();
    return version ? version->action : std::nullopt;
}

void RulesDocument::reportUnreadable(std::int64_t version)
{
    notify({.kind = DocumentNews::Kind::journal,
        .text = "Version " + std::to_string(version) + " can no longer be read."});
}

bool RulesDocument::restore(std::int64_t version)
{
    if (!isWorking())
        return restoreNow(version);
    m_stepsDue.push_back([this, version] {
        if (!restoreNow(version))
            reportUnreadable(version);
    });
    return true;
}

bool RulesDocument::restoreNow(std::int64_t version)
{
    const auto known = m_file.journal().version(version);
    if (!known || !known->isReadable)
        return false;
    // Where there is another thread, only that unpacks a long version, and finds it damaged.
    if (m_owner.background == nullptr && !m_file.journal().bytesOf(version))
        return false;
    begin();
    markChanged();
    forgetSteps();
    WriteOrder order = orderFor({.action = "Restore Version " + std::to_string(version)});
    order.restores = version;
    m_orders.push_back(std::move(order));
    pump();
    return true;
}

} // namespace quorvane::workflow
