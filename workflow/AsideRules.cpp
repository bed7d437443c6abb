#include "workflow/AsideRules.h"

#include "history/JournalPlace.h"
#include "platform/FileLock.h"
#include "platform/FileReplacement.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "rules/RuleNumbering.h"
#include "rules/RulesContent.h"
#include "rules/RulesFile.h"
#include "rules/RulesText.h"
#include "workflow/UnwritableRules.h"

#include <cerrno>
#include <new>
#include <system_error>

namespace quorvane::workflow {

std::vector<rules::RuleValue> withoutEqual(
    const std::vector<rules::RuleValue>& rules, const std::vector<rules::RuleValue>& present)
{
    rules::RuleNumbering known;
    for (const rules::RuleValue& rule : present)
        known.numberOf(rule);
    const std::size_t ofPresent = known.size();
    std::vector<rules::RuleValue> others;
    for (const rules::RuleValue& rule : rules) {
        if (known.numberOf(rule) >= ofPresent)
            others.push_back(rule);
    }
    return others;
}

AsideRules::AsideRules(
    const std::string& stateFolder, const std::string& rulesFile, std::chrono::milliseconds wait)
    : m_stateFolder(stateFolder)
    , m_rulesFile(rulesFile)
    , m_wait(wait)
    , m_file(history::JournalPlace(stateFolder, rulesFile).asideFile())
{
}

AsideRules::Listing AsideRules::read() const
{
    return rulesOf(rules::RulesFileText::read(m_file));
}

AsideRules::Listing AsideRules::rulesOf(const rules::RulesFileText& text)
{
    Listing listing;
    if (text.errorMessage() || text.unreadReason()) {
        listing.problem = text.errorMessage() ? text.errorMessage() : text.unreadReason();
        return listing;
    }
    try {
        listing.rules = rules::rulesOfText(text.text());
    } catch (const std::bad_alloc&) {
        listing.problem = "Out of memory";
    }
    return listing;
}

std::optional<std::string> AsideRules::add(const std::vector<rules::RuleValue>& rules) const
{
    for (const rules::RuleValue& rule : rules) {
        if (const auto reason = whyUnwritable(rule, rules::LineEnds::whole))
            return reason;
    }
    return change([&rules](std::vector<rules::RuleValue>& aside) {
        aside = withoutEqual(aside, rules);
        aside.insert(aside.end(), rules.begin(), rules.end());
    });
}

std::optional<std::string> AsideRules::remove(const std::vector<rules::RuleValue>& rules) const
{
    return change([&rules](std::vector<rules::RuleValue>& aside) { aside = withoutEqual(aside, rules); });
}

std::optional<std::string> AsideRules::change(const Edit& edit) const
{
    const history::JournalPlace place(m_stateFolder, m_rulesFile);
    if (const auto refusal = place.refusal())
        return refusal;
    if (const auto problem = place.makeFolder())
        return problem;
    const platform::FileLock lock = platform::FileLock::take(m_file, platform::LockMode::exclusive, m_wait);
    if (!lock.isHeld())
        return lock.problem();
    Listing listing = rulesOf(rules::RulesFileText::read(m_file, lock));
    if (listing.problem)
        return listing.problem;
    edit(listing.rules);
    return write(listing.rules);
}

std::optional<std::string> AsideRules::write(const std::vector<rules::RuleValue>& rules) const
{
    constexpr mode_t forOwnerOnly = 0600;
    rules::RulesContent content(rules::LineEnds::whole);
    for (const rules::RuleValue& rule : rules)
        askValue(rule, [&content](const auto& fields) { content.append(fields); });
    platform::FileReplacement file(m_file);
    std::error_code error = file.error();
    if (!error && platform::writeFully(file.descriptor(), content.bytes(), error) != content.bytes().size()
        && !error)
        error = platform::systemError(EIO); // a write that returned 0 without an error
    if (!error)
        error = file.takePlace(forOwnerOnly);
    return error ? std::optional(m_file + ": " + platform::errorText(error)) : std::nullopt;
}

} // namespace quorvane::workflow
