#include "workflow/UserRulesFile.h"

#include "platform/FileBytes.h"
#include "platform/FileIdentity.h"
#include "platform/Log.h"
#include "platform/SystemError.h"
#include "platform/Unicode.h"
#include "rules/RuleLine.h"
#include "rules/RulesContent.h"
#include "rules/RulesDiff.h"
#include "rules/RulesFile.h"
#include "rules/RulesFileWriter.h"
#include "rules/RulesText.h"
#include "rules/WholeRules.h"
#include "workflow/UnwritableRules.h"

#include <algorithm>
#include <cstdint>
#include <future>
#include <new>
#include <string_view>
#include <thread>
#include <utility>

namespace quorvane::workflow {

namespace {

constexpr std::uint64_t fewRules = 20'000;

history::VersionKind versionKind(ChangeReason::Kind kind)
{
    switch (kind) {
    case ChangeReason::Kind::undo:
        return history::VersionKind::undo;
    case ChangeReason::Kind::redo:
        return history::VersionKind::redo;
    case ChangeReason::Kind::action:
        break;
    }
    return history::VersionKind::action;
}

ChangeCounts countsOf(const rules::RulesDifference& difference)
{
    return {difference.added.size(), difference.removed.size(), difference.changed.size()};
}

ChangeCounts countsOf(const rules::FileDifferenceCounts& counts)
{
    return {counts.added, counts.removed, counts.changed};
}

// Rules of which an equal one remains, or existed before, do not count.
rules::RulesDifference differenceMadeBy(const rules::ChangeSet& done)
{
    std::vector<rules::RuleValue> before;
    std::vector<rules::RuleValue> after;
    if (done.whole)
        (done.whole->isRemoval ? before : after) = done.whole->rules->values.values();
    for (const rules::ChangeSet::Removal& removal : done.removed)
        before.push_back(removal.value);
    for (const rules::ChangeSet::Change& change : done.changed) {
        before.push_back(change.before);
        after.push_back(change.after);
    }
    for (const rules::ChangeSet::Addition& addition : done.added)
        after.push_back(addition.value);
    return rulesDifference(before, after);
}

history::NewVersion newVersion(
    const ChangeCounts& counts, std::uint64_t rules, const history::DigestedBytes& bytes)
{
    history::NewVersion version;
    version.rules = rules;
    version.added = counts.added;
    version.removed = counts.removed;
    version.changed = counts.changed;
    version.bytes = bytes;
    return version;
}

// The contents of a file, and its digest.
struct FileContent {
    explicit FileContent(rules::RulesFileText read)
        : text(std::move(read))
        , bytes(text.bytes())
    {
    }

    rules::RulesFileText text;
    history::DigestedBytes bytes;
};

// A long file is read on another thread while its new content is generated.
std::future<FileContent> beginReading(const std::string& path, const platform::FileLock& lock, bool isLong)
{
    return std::async(isLong ? std::launch::async | std::launch::deferred : std::launch::deferred,
        [&path, &lock] { return FileContent(rules::RulesFileText::read(path, lock)); });
}

std::string wholeTextOf(const rules::RulesSnapshot& rules)
{
    rules::RulesContent content(rules::LineEnds::whole);
    rules.forEach([&content](const rules::RuleValue& rule) {
        askValue(rule, [&content](const auto& fields) { content.append(fields); });
    });
    return std::string(content.bytes());
}

// Empty content with memory reserved for about the size of the file, or for more rules than it has now.
rules::RulesContent roomFor(
    const rules::RulesSnapshot& rules, rules::LineEnds lineEnds, const std::string& path)
{
    constexpr std::uintmax_t usualRule = 160; // bytes
    std::error_code unknown;
    const auto file = platform::FileIdentity::ofPath(path, unknown);
    return {lineEnds, rules.size(),
        std::max(static_cast<std::uintmax_t>(file ? file->size : 0), usualRule * rules.size())};
}

DocumentNews newsOf(DocumentNews::Kind kind, std::string text)
{
    return {.kind = kind, .text = std::move(text)};
}

} // namespace

std::string unwritableMessage(const std::string& path, const platform::FileLock& lock)
{
    return lock.isHeldByAnother()
        ? "Another program is writing the rules file '" + path + "'; nothing was written"
        : "Failed to open file '" + path + "' for writing: " + platform::errorText(lock.error());
}

UserRulesFile::UserRulesFile(
    const platform::Locations& locations, std::string program, std::string stateFolder, platform::Log& log)
    : m_path(locations.userRulesFile())
    , m_program(std::move(program))
    , m_stateFolder(std::move(stateFolder))
    , m_log(log)
{
}

void UserRulesFile::setLimits(const history::JournalLimits& limits)
{
    m_limits = limits;
    m_journal.reset(); // reopened with these
}

platform::FileLock UserRulesFile::lock(std::chrono::milliseconds wait) const
{
    return platform::FileLock::take(m_path, platform::LockMode::exclusive, wait);
}

bool UserRulesFile::mayBeUnderWay() const
{
    return history::Journal::mayBeUnderWay(m_stateFolder, m_path);
}

std::unique_ptr<history::Journal> UserRulesFile::openJournal() const
{
    return history::Journal::open(m_stateFolder, m_path, m_limits, m_log);
}

history::Journal& UserRulesFile::journal()
{
    if (!m_journal)
        m_journal = openJournal();
    return *m_journal;
}

// Once per run: without a journal everything else still works.
void UserRulesFile::reportJournal(std::vector<DocumentNews>& news)
{
    if (auto notice = journal().takeNotice())
        news.push_back(newsOf(DocumentNews::Kind::journal, std::move(*notice)));
    if (journal().problem() && !std::exchange(m_hasReportedJournal, true))
        news.push_back(newsOf(
            DocumentNews::Kind::journal, "The history of the rules cannot be kept: " + *journal().problem()));
}

// The newest version of the journal is what our programs wrote last; any other bytes were written by another
// program, unless our own write was cut short there. The first version of a long file needs no look at its
// rules when their number is known.
std::optional<std::int64_t> UserRulesFile::keepForeign(const history::DigestedBytes& bytes,
    std::vector<DocumentNews>& news, std::optional<std::uint64_t> rulesInFile)
{
    const auto newest = journal().newest();
    if (newest && newest->bytes == bytes.bytes().size() && newest->sha256 == bytes.digest())
        return newest->number;
    if (!newest && bytes.bytes().empty())
        return std::nullopt; // an empty or missing file is the initial state
    if (newest && isCutShort(*newest, bytes.bytes()))
        return std::nullopt;
    const auto counts = !newest && rulesInFile
        ? rules::FileDifferenceCounts{.added = *rulesInFile, .rulesAfter = *rulesInFile}
        : countsSinceNewestVersion(bytes.bytes());
    history::NewVersion version = newVersion(countsOf(counts), counts.rulesAfter, bytes);
    version.kind = history::VersionKind::foreign;
    const auto recorded = journal().record(version);
    reportJournal(news);
    return recorded;
}

// Under the lock: otherwise a version recorded between reading and recording would be followed by older
// bytes, attributed to another program.
UserRulesFile::PresentVersion UserRulesFile::keepPresentVersion(std::chrono::milliseconds wait)
{
    const platform::FileLock held = lock(wait);
    const rules::RulesFileText text
        = held.isHeld() ? rules::RulesFileText::read(m_path, held) : rules::RulesFileText();
    if (!held.isHeld() || text.errorMessage())
        return {};
    std::vector<DocumentNews> news;
    const auto newest = journal().newest();
    PresentVersion present{.number = keepForeign(text.bytes(), news)};
    if (newest)
        present.before = newest->number == present.number ? newest->before : newest->number;
    return present;
}

bool UserRulesFile::isAsWeLeftIt(std::chrono::milliseconds wait)
{
    const auto newest = journal().newest();
    if (!newest || !newest->program)
        return false;
    const FileContent present(rules::RulesFileText::read(m_path, wait));
    return !present.text.errorMessage() && present.bytes.bytes().size() == newest->bytes
        && present.bytes.digest() == newest->sha256;
}

// A file with rules that may be missing in the store is never overwritten but renamed. Returns its new name.
std::optional<std::string> UserRulesFile::putAside(
    const std::string& reason, platform::FileLock& lock, WriteReport& report)
{
    auto aside = platform::putUnreadFileAside(m_path);
    if (!aside) {
        report.message
            = "Not writing file '" + m_path + "': " + reason + ", and it cannot be kept under another name";
        return std::nullopt;
    }
    lock = platform::FileLock::take(m_path, platform::LockMode::exclusive, std::chrono::seconds(0));
    return aside;
}

// The content of a write: the bytes for the file, and the intended text if they cannot represent it.
struct UserRulesFile::Meant {
    rules::RulesContent content;
    std::optional<std::string> whole{}; // the intended rules, if lines are cut
    std::uint64_t rules = 0;
    UnwritableRules unwritable{};
    ChangeCounts counts{};

    std::string_view text() const { return whole ? std::string_view(*whole) : content.bytes(); }
};

// A single pass: with a million rules, hardly any is still in the processor's caches in a second one.
UserRulesFile::Meant UserRulesFile::meantBy(const WriteOrder& order) const
{
    const rules::LineEnds lineEnds = order.wholeLines ? rules::LineEnds::whole : rules::LineEnds::cut;
    Meant meant{.content = roomFor(order.rules, lineEnds, m_path), .rules = order.rules.size()};
    if (order.change)
        meant.counts = countsOf(differenceMadeBy(*order.change));
    const auto append = [&](const auto& fields) {
        meant.content.append(fields);
        return readsBackAsWritten(fields, lineEnds);
    };
    order.rules.forEach([&](const rules::RuleValue& rule) {
        if (!askValue(rule, append))
            meant.unwritable.add(rule);
    });
    if (meant.content.isCut())
        meant.whole = wholeTextOf(order.rules);
    return meant;
}

std::optional<UserRulesFile::Meant> UserRulesFile::meantByVersion(std::int64_t number)
{
    auto bytes = journal().bytesOf(number);
    auto rules = journal().meantOf(number);
    if (!bytes || !rules)
        return std::nullopt;
    if (*rules == *bytes)
        rules.reset(); // before more is read
    Meant meant{.content = rules::RulesContent::ofText(std::move(*bytes)), .whole = std::move(rules)};
    const rules::FileDifferenceCounts counts = countsSinceNewestVersion(meant.text());
    meant.rules = counts.rulesAfter;
    meant.counts = countsOf(counts);
    return meant;
}

// Texts and rules of both are freed on return, before anything is packed.
rules::FileDifferenceCounts UserRulesFile::countsSinceNewestVersion(std::string_view text)
{
    const auto newest = journal().newest();
    const auto before = newest ? journal().meantOf(newest->number) : std::nullopt;
    return rules::fileDifferenceCounts(before ? *before : std::string_view(), text);
}

WriteReport UserRulesFile::write(const WriteOrder& order, platform::FileLock& lock)
{
    WriteReport report;
    try {
        writeTo(report, order, lock);
    } catch (const std::bad_alloc&) {
        report.message.emplace("Out of memory"); // short enough to need no allocation
    }
    return report;
}

// Why nothing may be written; none when it may.
std::optional<std::string> UserRulesFile::refusalOf(
    const WriteOrder& order, const std::optional<Meant>& meant, std::string_view present) const
{
    if (!meant)
        return "Version " + std::to_string(*order.restores) + " can no longer be read";
    if (!order.reason.refusesCuts || !meant->content.isCut())
        return std::nullopt;
    auto damage = whyRewritingCuts(order.rules, present);
    if (!damage)
        damage = whyLost(order.rules, meant->content.bytes());
    return damage ? std::optional("Not writing file '" + m_path + "': " + *damage) : std::nullopt;
}

// An undo or redo of a version that changes nothing and cannot be recorded: the next one would choose the
// same version.
bool UserRulesFile::isRepeatedForEver(const WriteOrder& order, const std::optional<std::int64_t>& recorded,
    const Meant& meant, std::string_view old)
{
    return order.reason.of && !recorded && old == meant.content.bytes();
}

void UserRulesFile::writeTo(WriteReport& report, const WriteOrder& order, platform::FileLock& lock)
{
    auto reading = beginReading(m_path, lock, order.rules.size() > fewRules);
    std::optional<Meant> meant;
    if (!order.restores)
        meant = meantBy(order);
    const FileContent present = reading.get();
    if (!present.text.errorMessage())
        keepForeign(present.bytes, report.news, order.unreadReason ? std::nullopt : order.rulesInFile);
    if (order.restores)
        meant = meantByVersion(*order.restores);
    else if (!order.change)
        meant->counts = countsOf(countsSinceNewestVersion(meant->text()));
    if (auto refusal = refusalOf(order, meant, present.text.text())) {
        report.message = std::move(refusal);
        report.isHopeless = !meant;
        return;
    }
    const auto unread = order.unreadReason ? order.unreadReason : present.text.errorMessage();
    const auto aside = unread ? putAside(*unread, lock, report) : std::nullopt;
    if (unread && !aside)
        return;
    const history::DigestedBytes old = aside ? history::DigestedBytes() : present.bytes;
    const auto earlier = versionUnderWay(order, *meant);
    report.version = earlier ? earlier : beginVersion(order, *meant, old);
    reportJournal(report.news);
    if (!aside && isRepeatedForEver(order, report.version, *meant, old.bytes())) {
        report.message = "The rules stay as they are, and the history cannot keep that version "
            + std::to_string(*order.reason.of)
            + (order.reason.kind == ChangeReason::Kind::undo ? " is undone" : " is done again");
        report.isHopeless = true;
        return;
    }
    if (lock.makeFile())
        writeOver(report, *meant, old.bytes());
    else
        report.message = unwritableMessage(m_path, lock);
    settleVersion(report, earlier.has_value(), lock);
    if (aside)
        reportFileAside(report, *unread, *aside);
    if (!report.message)
        checkWritten(report, *meant, order);
}

// If the journal could not complete a failed write, the file gets its old content back.
void UserRulesFile::writeOver(WriteReport& report, const Meant& meant, std::string_view old)
{
    rules::WriteResult result
        = writeRulesFile(m_path, meant.content, report.version ? std::nullopt : std::optional(old));
    report.isWritten = result.opened;
    report.message = std::move(result.message);
    for (std::string& warning : result.warnings)
        report.news.push_back(newsOf(DocumentNews::Kind::warning, std::move(warning)));
}

// If nothing could be written in its place, the file is renamed back.
void UserRulesFile::reportFileAside(WriteReport& report, const std::string& reason, const std::string& aside)
{
    if (!report.isWritten && platform::takeFileBack(aside, m_path))
        return;
    m_log.write("keeping '" + m_path + "', of which not everything was read, as '" + aside + "'");
    report.news.push_back(newsOf(DocumentNews::Kind::setAside,
        reason + ". It was kept as '" + aside + "', and the rules were written anew."));
}

void UserRulesFile::checkWritten(WriteReport& report, const Meant& meant, const WriteOrder& order) const
{
    if (meant.rules > fewRules)
        std::this_thread::sleep_for(
            rules::KnownFile::usualRoughness); // so that later checks need not read all of it
    const std::string_view written = meant.content.bytes();
    if (auto known = rules::KnownFile::ofFileWith(m_path, written))
        report.known = std::move(*known);
    else
        report.message = "The rules file '" + m_path + "' does not hold what was written to it";
    if (meant.whole && !platform::isValidUtf8(written))
        report.news.push_back(newsOf(DocumentNews::Kind::warning,
            "The rules file '" + m_path
                + "' is cut within a letter: no program reads any of its rules. Undo makes it readable "
                  "again."));
    if (!order.restores && (meant.whole || meant.unwritable.count() > 0))
        report.readAs = rules::RulesSnapshot::ofRead(rules::rulesOfText(written), order.rules);
    report.unwritable = meant.unwritable;
}

// The version that an earlier, failed write of the same order has begun.
std::optional<std::int64_t> UserRulesFile::versionUnderWay(const WriteOrder& order, const Meant& meant)
{
    const auto newest = journal().newest();
    if (!newest || newest->state != history::VersionState::underWay)
        return std::nullopt;
    const bool isSameAction = newest->action == order.reason.action
        && newest->kind == versionKind(order.reason.kind) && newest->of == order.reason.of;
    const bool isSame = (order.completes || isSameAction)
        && journal().bytesOf(newest->number) == meant.content.bytes()
        && journal().meantOf(newest->number) == meant.text();
    return isSame ? std::optional(newest->number) : std::nullopt;
}

// None when the file already has the content, which makes no version, or when the journal cannot record it.
// An undo that changes nothing is recorded nevertheless: the next undo then reverts the action before.
std::optional<std::int64_t> UserRulesFile::beginVersion(
    const WriteOrder& order, const Meant& meant, const history::DigestedBytes& previous)
{
    if (order.reason.kind == ChangeReason::Kind::action && meant.counts.isNothing()
        && previous.bytes() == meant.content.bytes())
        return std::nullopt;
    history::NewVersion version = newVersion(meant.counts, meant.rules, meant.content.bytes());
    version.program = m_program;
    version.action = order.reason.action;
    version.kind = versionKind(order.reason.kind);
    version.of = order.reason.of;
    if (meant.whole)
        version.meant = *meant.whole;
    version.previousBytes = previous;
    return journal().begin(version);
}

// An incomplete write leaves its version under way, to be completed by the next successful one.
void UserRulesFile::settleVersion(const WriteReport& report, bool isOfEarlierWrite, platform::FileLock& lock)
{
    using State = history::VersionState;
    if (!report.version)
        return;
    if (!report.message && report.isWritten)
        journal().finish(*report.version, isOfEarlierWrite ? State::recovered : State::done);
    else if (report.isWritten)
        noteLeft(lock);
    else if (!isOfEarlierWrite)
        journal().abandon(*report.version);
}

} // namespace quorvane::workflow
