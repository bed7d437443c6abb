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

namespace quorvane {

std::vector<RuleValue> withoutEqual(
    const std::vector<RuleValue>& rules, const std::vector<RuleValue>& present)
{
    RuleNumbering known;
    for (const RuleValue& rule : present)
        known.numberOf(rule);
    const std::size_t ofPresent = known.size();
    std::vector<RuleValue> others;
    for (const RuleValue& rule : rules) {
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
    , m_file(JournalPlace(stateFolder, rulesFile).asideFile())
{
}

AsideRules::Listing AsideRules::read() const
{
    return rulesOf(RulesFileText::read(m_file));
}

AsideRules::Listing AsideRules::rulesOf(const RulesFileText& text)
{
    Listing listing;
    if (text.errorMessage() || text.unreadReason()) {
        listing.problem = text.errorMessage() ? text.errorMessage() : text.unreadReason();
        return listing;
    }
    try {
        listing.rules = rulesOfText(text.text());
    } catch (const std::bad_alloc&) {
        listing.problem = "Out of memory";
    }
    return listing;
}

std::optional<std::string> AsideRules::add(const std::vector<RuleValue>& rules) const
{
    for (const RuleValue& rule : rules) {
        if (const auto reason = whyUnwritable(rule, LineEnds::whole))
            return reason;
    }
    return change([&rules](std::vector<RuleValue>& aside) {
        aside = withoutEqual(aside, rules);
        aside.insert(aside.end(), rules.begin(), rules.end());
    });
}

std::optional<std::string> AsideRules::remove(const std::vector<RuleValue>& rules) const
{
    return change([&rules](std::vector<RuleValue>& aside) { aside = withoutEqual(aside, rules); });
}

std::optional<std::string> AsideRules::change(const Edit& edit) const
{
    const JournalPlace place(m_stateFolder, m_rulesFile);
    if (const auto refusal = place.refusal())
        return refusal;
    if (const auto problem = place.makeFolder())
        return problem;
    const FileLock lock = FileLock::take(m_file, LockMode::exclusive, m_wait);
    if (!lock.isHeld())
        return lock.problem();
    Listing listing = rulesOf(RulesFileText::read(m_file, lock));
    if (listing.problem)
        return listing.problem;
    edit(listing.rules);
    return write(listing.rules);
}

std::optional<std::string> AsideRules::write(const std::vector<RuleValue>& rules) const
{
    constexpr mode_t forOwnerOnly = 0600;
    RulesContent content(LineEnds::whole);
    for (const RuleValue& rule : rules)
        askValue(rule, [&content](const auto& fields) { content.append(fields); });
    FileReplacement file(m_file);
    std::error_code error = file.error();
    if (!error && writeFully(file.descriptor(), content.bytes(), error) != content.bytes().size() && !error)
        error = systemError(EIO); // a call that writes nothing and does not say why
    if (!error)
        error = file.takePlace(forOwnerOnly);
    return error ? std::optional(m_file + ": " + errorText(error)) : std::nullopt;
}

} // namespace quorvane
