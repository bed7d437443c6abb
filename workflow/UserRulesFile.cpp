#include "workflow/UserRulesFile.h"

#include "codesign/Digests.h"
#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/SystemError.h"
#include "rules/RuleLine.h"
#include "rules/RulesContent.h"
#include "rules/RulesDiff.h"
#include "rules/RulesFile.h"
#include "rules/RulesFileWriter.h"
#include "rules/RulesText.h"
#include "workflow/CutWrite.h"

#include <new>
#include <string_view>
#include <thread>
#include <utility>

namespace quorvane {

namespace {

constexpr std::uint64_t fewRules = 20'000;

VersionKind versionKind(ChangeReason::Kind kind)
{
    switch (kind) {
    case ChangeReason::Kind::undo:
        return VersionKind::undo;
    case ChangeReason::Kind::redo:
        return VersionKind::redo;
    case ChangeReason::Kind::action:
        break;
    }
    return VersionKind::action;
}

ChangeCounts countsOf(const RulesDifference& difference)
{
    return {difference.added.size(), difference.removed.size(), difference.changed.size()};
}

NewVersion newVersion(const ChangeCounts& counts, std::uint64_t rules, std::string_view bytes)
{
    NewVersion version;
    version.rules = rules;
    version.added = counts.added;
    version.removed = counts.removed;
    version.changed = counts.changed;
    version.bytes = bytes;
    return version;
}

RulesContent contentOf(const RulesSnapshot& rules, LineEnds lineEnds)
{
    RulesContent content(lineEnds);
    rules.forEach([&content](const RuleValue& rule) {
        askValue(rule, [&content](const auto& fields) { content.append(fields); });
    });
    return content;
}

std::uint64_t countOfUnwritable(const RulesSnapshot& rules, LineEnds lineEnds)
{
    std::uint64_t count = 0;
    rules.forEach([&](const RuleValue& rule) {
        count += askValue(rule, [&](const auto& fields) { return readsBackAsWritten(fields, lineEnds); })
            ? 0U
            : 1U;
    });
    return count;
}

DocumentNews newsOf(DocumentNews::Kind kind, std::string text)
{
    return {.kind = kind, .text = std::move(text)};
}

} // namespace

std::string unwritableMessage(const std::string& path, const FileLock& lock)
{
    return lock.isHeldByAnother()
        ? "Another program is writing the rules file '" + path + "'; nothing was written"
        : "Failed to open file '" + path + "' for writing: " + errorText(lock.error());
}

ChangeCounts& ChangeCounts::operator+=(const ChangeCounts& other)
{
    added += other.added;
    removed += other.removed;
    changed += other.changed;
    return *this;
}

UserRulesFile::UserRulesFile(
    const Locations& locations, std::string program, std::string stateFolder, Log& log)
    : m_path(locations.userRulesFile())
    , m_program(std::move(program))
    , m_stateFolder(std::move(stateFolder))
    , m_log(log)
{
}

FileLock UserRulesFile::lock(std::chrono::milliseconds wait) const
{
    return FileLock::take(m_path, LockMode::exclusive, wait);
}

bool UserRulesFile::mayBeUnderWay() const
{
    return Journal::mayBeUnderWay(m_stateFolder, m_path);
}

std::unique_ptr<Journal> UserRulesFile::openJournal() const
{
    return Journal::open(m_stateFolder, m_path, m_limits, m_log);
}

Journal& UserRulesFile::journal()
{
    if (!m_journal)
        m_journal = openJournal();
    return *m_journal;
}

// Once in a run: a journal that cannot be kept is no reason to stop anything.
void UserRulesFile::tellOfJournal(std::vector<DocumentNews>& news)
{
    if (auto notice = journal().takeNotice())
        news.push_back(newsOf(DocumentNews::Kind::journal, std::move(*notice)));
    if (journal().problem() && !std::exchange(m_hasToldOfJournal, true))
        news.push_back(newsOf(
            DocumentNews::Kind::journal, "The history of the rules cannot be kept: " + *journal().problem()));
}

// The newest version of the journal is what our programs wrote last; other bytes are another program's.
std::optional<std::int64_t> UserRulesFile::keepForeign(
    std::string_view bytes, std::vector<DocumentNews>& news)
{
    const auto newest = journal().newest();
    if (newest && newest->bytes == bytes.size() && newest->sha256 == sha256(bytes))
        return newest->number;
    if (!newest && bytes.empty())
        return std::nullopt; // an empty file, or none, is what everything begins with
    const std::vector<RuleValue> rules = rulesOfText(bytes);
    const auto before = newest ? journal().meantOf(newest->number) : std::nullopt;
    const ChangeCounts counts
        = countsOf(rulesDifference(before ? rulesOfText(*before) : std::vector<RuleValue>(), rules));
    NewVersion version = newVersion(counts, rules.size(), bytes);
    version.kind = VersionKind::foreign;
    const auto number = journal().record(version);
    tellOfJournal(news);
    return number;
}

std::optional<std::int64_t> UserRulesFile::keepPresentVersion()
{
    std::vector<DocumentNews> news;
    const auto newest = journal().newest();
    keepForeign(RulesFileText::read(m_path).bytes(), news);
    return newest ? std::optional(newest->number) : std::nullopt;
}

UserRulesFile::Recovery UserRulesFile::recover(FileLock& lock)
{
    if (!mayBeUnderWay())
        return {};
    const auto version = journal().underWay();
    if (!version)
        return {};
    const auto meant = journal().bytesOf(version->number);
    const auto before
        = version->before ? journal().bytesOf(*version->before) : std::optional<std::string>("");
    const RulesFileText now = RulesFileText::read(m_path, lock);
    if (!meant || !now.identity()) {
        journal().abandon(version->number);
        return {};
    }
    const std::string action = version->action.value_or("a change");
    switch (fileAfterWrite(now.bytes(), before, *meant)) {
    case FileAfterWrite::asMeant:
        journal().finish(version->number, VersionState::done);
        return {};
    case FileAfterWrite::asBefore:
        journal().abandon(version->number);
        return {newsOf(DocumentNews::Kind::recovered,
            "\u201c" + action
                + "\u201d was cut short before it began; the rules are as they were before it.")};
    case FileAfterWrite::cutShort:
        break;
    case FileAfterWrite::foreign: {
        Recovery recovery;
        recovery.before = rulesOfText(before.value_or(std::string()));
        recovery.meant = rulesOfText(journal().meantOf(version->number).value_or(*meant));
        journal().abandon(version->number);
        return recovery;
    }
    }
    if (!lock.makeFile())
        return {};
    const WriteResult result = writeRulesFile(m_path, RulesContent::ofText(*meant));
    if (result.message)
        return {}; // stays under way, for the next that can write
    journal().finish(version->number, VersionState::recovered);
    m_log.write("completed the write of '" + m_path + "' that was cut short: " + action);
    return {newsOf(DocumentNews::Kind::recovered,
        "The writing of the rules was cut short at \u201c" + action + "\u201d; it has been completed.")};
}

std::optional<std::vector<RuleValue>> UserRulesFile::rulesUnderWay()
{
    if (!mayBeUnderWay())
        return std::nullopt;
    const auto version = journal().underWay();
    const auto meant = version ? journal().bytesOf(version->number) : std::nullopt;
    if (!meant)
        return std::nullopt;
    const auto before
        = version->before ? journal().bytesOf(*version->before) : std::optional<std::string>("");
    if (fileAfterWrite(RulesFileText::read(m_path).bytes(), before, *meant) != FileAfterWrite::cutShort)
        return std::nullopt;
    return rulesOfText(journal().meantOf(version->number).value_or(*meant));
}

// A file of which rules may be missing in the store is never written over.
bool UserRulesFile::putAside(const WriteOrder& order, FileLock& lock, WriteReport& report)
{
    const auto aside = putUnreadFileAside(m_path);
    if (!aside) {
        report.message = "Not writing file '" + m_path + "': " + *order.unreadReason
            + ", and it cannot be kept under another name";
        return false;
    }
    m_log.write("keeping '" + m_path + "', of which not everything was read, as '" + *aside + "'");
    report.news.push_back(newsOf(DocumentNews::Kind::setAside,
        *order.unreadReason + ". It was kept as '" + *aside + "', and the rules were written anew."));
    lock = FileLock::take(m_path, LockMode::exclusive, std::chrono::seconds(0));
    return true;
}

// The content of a write: the bytes for the file, and what they stand for where they cannot hold it.
struct UserRulesFile::Meant {
    RulesContent content;
    std::optional<std::string> whole{}; // the rules as meant, where lines are cut
    std::uint64_t rules = 0;
    std::uint64_t unwritableRules = 0; // that do not come back from the file as they are
    ChangeCounts counts{};
};

std::optional<UserRulesFile::Meant> UserRulesFile::meantBy(const WriteOrder& order)
{
    if (order.restores)
        return meantByVersion(*order.restores);
    Meant meant{.content = contentOf(order.rules, order.wholeLines ? LineEnds::whole : LineEnds::cut),
        .rules = order.rules.size(),
        .unwritableRules = countOfUnwritable(order.rules, order.wholeLines ? LineEnds::whole : LineEnds::cut),
        .counts = order.counts};
    if (meant.content.isCut())
        meant.whole = contentOf(order.rules, LineEnds::whole).bytes();
    return meant;
}

std::optional<UserRulesFile::Meant> UserRulesFile::meantByVersion(std::int64_t number)
{
    const auto bytes = journal().bytesOf(number);
    const auto rules = journal().meantOf(number);
    if (!bytes || !rules)
        return std::nullopt;
    Meant meant{.content = RulesContent::ofText(*bytes)};
    if (*rules != *bytes)
        meant.whole = *rules;
    const std::vector<RuleValue> restored = rulesOfText(*rules);
    const auto present = journal().newest();
    const auto presentRules = present ? journal().meantOf(present->number) : std::nullopt;
    meant.rules = restored.size();
    meant.counts = countsOf(rulesDifference(rulesOfText(presentRules.value_or(std::string())), restored));
    return meant;
}

WriteReport UserRulesFile::write(const WriteOrder& order, FileLock& lock)
{
    WriteReport report;
    try {
        writeTo(report, order, lock);
    } catch (const std::bad_alloc&) {
        report.message = "Internal error: unable to allocate memory";
    }
    return report;
}

void UserRulesFile::writeTo(WriteReport& report, const WriteOrder& order, FileLock& lock)
{
    const RulesFileText previous = RulesFileText::read(m_path, lock);
    keepForeign(previous.bytes(), report.news);
    if (order.unreadReason && !putAside(order, lock, report))
        return;
    const std::optional<Meant> meant = meantBy(order);
    if (!meant) {
        report.message = "Version " + std::to_string(*order.restores) + " can no longer be read";
        return;
    }
    report.version = beginVersion(order, *meant, previous.bytes());
    tellOfJournal(report.news);
    if (!lock.makeFile()) {
        report.message = unwritableMessage(m_path, lock);
    } else {
        WriteResult result = writeRulesFile(m_path, meant->content);
        report.isWritten = result.opened;
        report.message = std::move(result.message);
        for (std::string& warning : result.warnings)
            report.news.push_back(newsOf(DocumentNews::Kind::warning, std::move(warning)));
    }
    settleVersion(report);
    if (report.message)
        return;
    if (meant->rules > fewRules)
        std::this_thread::sleep_for(KnownFile::usualRoughness); // so that no later look has to read it all
    const RulesFileText written = RulesFileText::read(m_path, lock);
    report.known = KnownFile::of(m_path, written);
    if (written.bytes() != meant->content.bytes())
        report.message = "The rules file '" + m_path + "' does not hold what was written to it";
    else if (meant->whole || meant->unwritableRules > 0)
        report.readAs = rulesOfText(written.bytes());
    report.unwritableRules = meant->unwritableRules;
}

// None when the file already is as meant, which is no version, or when the journal cannot keep it.
std::optional<std::int64_t> UserRulesFile::beginVersion(
    const WriteOrder& order, const Meant& meant, std::string_view previous)
{
    if (meant.counts.isNothing() && previous == meant.content.bytes())
        return std::nullopt;
    NewVersion version = newVersion(meant.counts, meant.rules, meant.content.bytes());
    version.program = m_program;
    version.action = order.reason.action;
    version.kind = versionKind(order.reason.kind);
    version.of = order.reason.of;
    if (meant.whole)
        version.meant = *meant.whole;
    version.previousBytes = previous;
    return journal().begin(version);
}

// A write that stopped half-way leaves its version under way, for the next that can write to complete.
void UserRulesFile::settleVersion(const WriteReport& report)
{
    if (!report.version || (report.isWritten && report.message))
        return;
    if (report.isWritten)
        journal().finish(*report.version, VersionState::done);
    else
        journal().abandon(*report.version);
}

} // namespace quorvane
