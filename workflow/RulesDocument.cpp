#include "workflow/RulesDocument.h"

#include "platform/Log.h"
#include "rules/RulesFile.h"
#include "workflow/DocumentTexts.h"
#include "workflow/FailSafeSuggestions.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace quorvane::workflow {

namespace {

constexpr const char* severalActions = "Change Rules";
constexpr const char* outOfMemory = "Out of memory"; // short enough to need no allocation

// Above this number of rules, to be written or in the file, a write is worth a thread: below, it takes some
// milliseconds and what the disk takes.
constexpr std::size_t mostWrittenAtOnce = 5'000;

} // namespace

RulesDocument::RulesDocument(
    rules::RuleManager& store, RunState& run, DocumentOwner owner, platform::Log& log)
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

ChangeResult RulesDocument::perform(const rules::ChangeSet& change, const ChangeReason& reason)
{
    ChangeResult result;
    attempt([&] { result = perform(rules::ChangeSet(change), reason); });
    result.failure = m_failure;
    return result;
}

ChangeResult RulesDocument::perform(rules::ChangeSet&& change, const ChangeReason& reason)
{
    ChangeResult result;
    attempt([&] {
        begin();
        markChanged();
        result = commit(applied(std::move(change)), reason);
    });
    result.failure = m_failure;
    return result;
}

// Applies all of it or, when memory runs out, nothing.
rules::ChangeSet RulesDocument::applied(rules::ChangeSet change)
{
    const bool isEmpty = change.isEmpty();
    rules::ChangeSet done = m_store.apply(std::move(change));
    if (done.isEmpty() && !isEmpty && m_store.lastErrorMessage() == outOfMemory)
        throw std::bad_alloc();
    return done;
}

void RulesDocument::failForMemory()
{
    fail(outOfMemory);
}

void RulesDocument::begin()
{
    if (!m_stepsDue.empty())
        waitUntilWritten();
    if (m_knownReading != m_store.ownFileReadings())
        noteFileRead();
    if (!m_rulesInFile)
        m_rulesInFile = m_store.userRulesSnapshot();
}

ChangeResult RulesDocument::commit(rules::ChangeSet done, const ChangeReason& reason)
{
    m_lacksOrder = !attempt([&] {
        begin();
        const auto change = std::make_shared<const rules::ChangeSet>(std::move(done));
        WriteOrder order = orderFor(reason, change);
        order.step = m_steps.remember(change, reason);
        m_orders.push_back(std::move(order));
    });
    if (!m_lacksOrder)
        pump();
    return {m_failure};
}

WriteOrder RulesDocument::orderFor(
    const ChangeReason& reason, std::shared_ptr<const rules::ChangeSet> change) const
{
    WriteOrder order;
    order.rules = m_store.userRulesSnapshot();
    order.reason = reason;
    order.change = std::move(change);
    order.wholeLines = m_owner.settings.wholeLines;
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
    if (isWorking())
        return;
    if (m_failure)
        joinOrders();
    if (m_orders.empty())
        return;
    platform::FileLock lock = m_lock.isHeld() ? std::move(m_lock) : m_file.lock(patience());
    if (!lock.isHeldByAnother() || m_owner.background == nullptr) {
        continueWith(std::move(lock));
        return;
    }
    auto later = std::make_shared<platform::FileLock>();
    inBackground(
        DocumentWork::writing, [this, later] { *later = m_file.lock(m_owner.lockTimeout); },
        [this, later] { continueWith(std::move(*later)); });
}

// A window does not wait for another process.
std::chrono::milliseconds RulesDocument::patience() const
{
    return m_owner.background == nullptr ? m_owner.lockTimeout : std::chrono::seconds(0);
}

void RulesDocument::continueWith(platform::FileLock lock)
{
    if (!lock.isHeld()) {
        m_orders.front().hasFailed = true;
        fail(unwritableMessage(m_file.path(), lock));
        return;
    }
    if (isWorthAThread() && (m_knownFile.hash || isFileAhead() || m_file.mayBeUnderWay()))
        return mergeInBackground(std::move(lock));
    bringStoreUpToDate(lock);
    writeFirstOrder(std::move(lock));
}

// Requires that the store is up to date with the file.
void RulesDocument::writeFirstOrder(platform::FileLock lock)
{
    m_run.internalWrite = true;
    if (m_orders.empty())
        return;
    if (m_rulesInFile)
        m_orders.front().rulesInFile = m_rulesInFile->size();
    const std::uint64_t mostRules
        = std::max<std::uint64_t>(m_orders.front().rules.size(), m_orders.front().rulesInFile.value_or(0));
    if (m_owner.background != nullptr && mostRules > mostWrittenAtOnce)
        return writeInBackground(std::move(lock));
    const WriteReport report = m_file.write(m_orders.front(), lock);
    lock = platform::FileLock();
    finish(report);
}

bool RulesDocument::isWorthAThread() const
{
    return m_owner.background != nullptr && m_store.storedRules() > mostWrittenAtOnce;
}

void RulesDocument::writeInBackground(platform::FileLock lock)
{
    ++m_run.writesUnderWay;
    auto report = std::make_shared<WriteReport>();
    auto held = std::make_shared<platform::FileLock>(std::move(lock));
    inBackground(
        DocumentWork::writing,
        [this, report, held, order = m_orders.front()] {
            *report = m_file.write(order, *held);
            *held = platform::FileLock();
        },
        [this, report] {
            --m_run.writesUnderWay;
            finish(*report);
        });
}

// Merges all pending orders into one, for the current rules. It holds none of their changes: while the file
// cannot be written there may be any number of them.
void RulesDocument::joinOrders()
{
    if (m_lacksOrder)
        m_orders.push_back(orderFor({.action = severalActions}));
    m_lacksOrder = false;
    if (m_orders.empty())
        return;
    if (m_orders.front().completes && m_orders.size() > 1)
        m_orders.pop_front(); // every later order does that as well
    WriteOrder order = m_orders.back();
    order.rules = m_store.userRulesSnapshot();
    if (m_orders.size() > 1) {
        order.isJoined = true;
        order.step = 0;
        order.change.reset();
        if (!order.restores)
            order.reason = {.action = severalActions, .refusesCuts = order.reason.refusesCuts};
    }
    m_orders.assign(1, std::move(order));
}

void RulesDocument::finish(const WriteReport& report)
{
    m_run.internalWrite = true;
    m_store.setLastErrorMessage(report.message);
    for (const DocumentNews& news : report.news)
        notify(news);
    if (!report.isWritten || report.message) {
        if (report.isHopeless)
            dropFirstOrder();
        else
            m_orders.front().hasFailed = true;
        fail(report.message.value_or("The rules file '" + m_file.path() + "' could not be written"));
        return;
    }
    noteWritten(report);
    warnOf(report.unwritable);
    pump();
    reportFile();
}

// Changes whose orders were joined with it still have to be written.
void RulesDocument::dropFirstOrder()
{
    if (m_orders.front().isJoined)
        m_lacksOrder = true;
    m_orders.pop_front();
}

void RulesDocument::noteWritten(const WriteReport& report)
{
    m_failure.reset();
    m_knownFile = report.known;
    m_hasReportedFile = false;
    if (report.version)
        m_knownVersion = report.version;
    if (m_orders.front().unreadReason)
        m_store.forgetUnreadRules();
    noteVersion(m_orders.front(), report.version);
    if (m_orders.front().isJoined && !m_file.journal().problem())
        forgetSteps(); // its actions are one version, which is undone as a whole
    const bool wasRestored = m_orders.front().restores.has_value();
    m_rulesInFile = report.readAs.value_or(m_orders.front().rules);
    m_orders.pop_front();
    if (wasRestored)
        takeRestored();
    else if (m_orders.empty() && !report.readAs)
        m_rulesInFile.reset(); // now those of the store
}

// What undoes or redoes an action may have been ordered before that had a version.
void RulesDocument::noteVersion(const WriteOrder& written, std::optional<std::int64_t> version)
{
    if (written.step == 0 || written.reason.kind != ChangeReason::Kind::action)
        return;
    m_steps.noteVersion(written.step, version);
    for (WriteOrder& order : m_orders) {
        if (order.step == written.step && order.reason.kind != ChangeReason::Kind::action)
            order.reason.of = version;
    }
}

// Updates the store, which has the rules from before the restore, to the restored bytes. Changes made in the
// meantime are merged with them before they are written.
void RulesDocument::takeRestored()
{
    m_knownFile = {};
    if (!m_orders.empty())
        return;
    if (isWorthAThread())
        reloadInBackground(ReloadCause::ownWrite);
    else
        reloadAtOnce(ReloadCause::ownWrite);
}

// Otherwise a write that has failed would be repeated for ever.
bool RulesDocument::hasUntriedOrder() const
{
    return m_lacksOrder || std::any_of(m_orders.begin(), m_orders.end(), [](const WriteOrder& order) {
        return !order.hasFailed;
    });
}

// Actions that no version has: newer than all of these.
bool RulesDocument::hasUnrecordedActions() const
{
    return m_lacksOrder || std::any_of(m_orders.begin(), m_orders.end(), [](const WriteOrder& order) {
        return order.isJoined || (order.change && !order.change->isEmpty());
    });
}

void RulesDocument::fail(const std::string& message)
{
    m_failure = message;
    m_isReloadDue = false;
    m_store.setLastErrorMessage(message);
    reportFile();
}

void RulesDocument::writeNow()
{
    if (isWorking())
        return; // the first order is in progress
    attempt([this] {
        joinOrders();
        if (m_orders.empty())
            m_failure.reset(); // nothing is left to be written
        startWriting();
    });
    reportFile();
}

void RulesDocument::waitUntilWritten()
{
    while (isWorking() && m_owner.background != nullptr)
        m_owner.background->wait();
}

void RulesDocument::discardSuggestions()
{
    keepSuggestions(m_store.locations(), m_owner.stateFolder, m_owner.settings.history, m_log);
    quorvane::workflow::discardSuggestions(m_store.locations());
}

void RulesDocument::inBackground(DocumentWork kind, std::function<void()> work, std::function<void()> then)
{
    if (m_owner.background == nullptr) {
        work();
        then();
        return;
    }
    m_work = kind;
    auto hasRoom = std::make_shared<bool>(true);
    const auto workWithRoom = [hasRoom, work = std::move(work)] {
        try {
            work();
        } catch (const std::bad_alloc&) {
            *hasRoom = false;
        }
    };
    m_owner.background->run(workWithRoom, [this, hasRoom, then = std::move(then)] {
        m_work = DocumentWork::none;
        attempt([&] {
            then();
            if (!*hasRoom)
                throw std::bad_alloc();
            if (hasUntriedOrder())
                startWriting();
            if (m_isReloadDue)
                reload();
            if (m_isLookDue)
                takeFileOver();
        });
        attempt([&] { takeStepsDue(); });
        reportFile();
    });
    reportFile();
}

} // namespace quorvane::workflow
