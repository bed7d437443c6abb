#include "workflow/UserRulesFile.h"

#include "platform/Log.h"
#include "rules/MergedChange.h"
#include "rules/RulesContent.h"
#include "rules/RulesFile.h"
#include "rules/RulesFileWriter.h"
#include "rules/RulesMerge.h"
#include "rules/RulesText.h"
#include "workflow/VersionChanges.h"

#include <memory>
#include <string_view>
#include <utility>

// How a rules file completes what was interrupted, and notes what was not completed.

namespace quorvane::workflow {

namespace {

DocumentNews recoveryNews(std::string text)
{
    return {.kind = DocumentNews::Kind::recovered, .text = std::move(text)};
}

} // namespace

// Newest first: a newer one includes the older ones, unless it never began.
UserRulesFile::Recovery UserRulesFile::recover(platform::FileLock& lock)
{
    std::vector<DocumentNews> news;
    if (mayBeUnderWay()) {
        for (const history::JournalVersion& version : journal().underWay()) {
            if (auto recovery = settle(version, lock)) {
                recovery->news.insert(recovery->news.begin(), news.begin(), news.end());
                return std::move(*recovery);
            }
            news.assign(1,
                recoveryNews("\u201c" + actionText(version)
                    + "\u201d was cut short before it began; the rules are as they were before it."));
        }
    }
    return {.news = std::move(news)};
}

// None when its write never began: then older ones decide.
std::optional<UserRulesFile::Recovery> UserRulesFile::settle(
    const history::JournalVersion& version, platform::FileLock& lock)
{
    const auto meant = journal().bytesOf(version.number);
    if (!meant) // damaged, or the journal cannot be read now
        return Recovery();
    const auto meantRules
        = [&] { return rules::rulesOfText(journal().meantOf(version.number).value_or(*meant)); };
    const rules::RulesFileText now = rules::RulesFileText::read(m_path, lock);
    if (now.errorMessage())
        return Recovery{.rules = meantRules()};
    switch (stateOf(version, now.bytes(), *meant)) {
    case FileAfterWrite::asMeant:
        journal().finish(version.number, history::VersionState::done);
        return Recovery();
    case FileAfterWrite::asBefore:
        if (!journal().abandon(version.number))
            return Recovery();
        return std::nullopt;
    case FileAfterWrite::cutShort:
        break;
    case FileAfterWrite::foreign: {
        const auto before
            = version.before ? journal().meantOf(*version.before) : std::optional<std::string>(std::string());
        return Recovery{.rules = rulesOf(mergeRules(rules::rulesOfText(before.value_or(std::string())),
                            meantRules(), rules::rulesOfText(now.bytes())))};
    }
    }
    if (!complete(version, *meant, lock))
        return Recovery{.rules = meantRules()};
    DocumentNews news = recoveryNews("The writing of the rules was cut short at \u201c" + actionText(version)
        + "\u201d; it has been completed.");
    news.shownFrom = version.number;
    return Recovery{.news = {std::move(news)}};
}

FileAfterWrite UserRulesFile::stateOf(
    const history::JournalVersion& version, std::string_view now, std::string_view meant)
{
    const auto former = version.before ? journal().version(*version.before) : std::nullopt;
    const auto before = version.before ? journal().bytesOf(*version.before) : std::optional<std::string>("");
    const bool wasCut = former && former->state == history::VersionState::underWay;
    const FileAfterWrite state
        = fileAfterWrite(now, before, meant, wasCut ? OldBytes::beginning : OldBytes::all);
    return state == FileAfterWrite::foreign && journal().isLeft(now) ? FileAfterWrite::cutShort : state;
}

bool UserRulesFile::isCutShort(const history::JournalVersion& version, std::string_view now)
{
    if (version.state != history::VersionState::underWay)
        return false;
    const auto meant = journal().bytesOf(version.number);
    return meant && stateOf(version, now, *meant) == FileAfterWrite::cutShort;
}

// A version that cannot be completed stays under way until a write succeeds.
bool UserRulesFile::complete(
    const history::JournalVersion& version, std::string meant, platform::FileLock& lock)
{
    if (!lock.makeFile())
        return false;
    const rules::WriteResult result = writeRulesFile(m_path, rules::RulesContent::ofText(std::move(meant)));
    if (result.message) {
        noteLeft(lock);
        return false;
    }
    journal().finish(version.number, history::VersionState::recovered);
    m_log.write("completed the write of '" + m_path + "' that was cut short: " + actionText(version));
    return true;
}

std::optional<std::string> UserRulesFile::textUnderWay(std::chrono::milliseconds wait)
{
    if (!mayBeUnderWay())
        return std::nullopt;
    const rules::RulesFileText now = rules::RulesFileText::read(m_path, wait);
    for (const history::JournalVersion& version : journal().underWay()) {
        const auto meant = journal().bytesOf(version.number);
        const FileAfterWrite state = meant ? stateOf(version, now.bytes(), *meant) : FileAfterWrite::foreign;
        if (state == FileAfterWrite::cutShort)
            return journal().meantOf(version.number);
        if (state != FileAfterWrite::asBefore)
            break;
    }
    return std::nullopt;
}

void UserRulesFile::noteLeft(const platform::FileLock& lock)
{
    const rules::RulesFileText left = rules::RulesFileText::read(m_path, lock);
    if (!left.errorMessage())
        journal().noteLeft(left.bytes());
}

} // namespace quorvane::workflow
