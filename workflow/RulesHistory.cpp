#include "workflow/RulesHistory.h"

#include "rules/RulesDiff.h"
#include "rules/RulesText.h"
#include "workflow/RulesDocument.h"

namespace quorvane::workflow {

RulesHistory::RulesHistory(RulesDocument& document)
    : m_document(document)
{
}

std::string RulesHistory::name() const
{
    return "Rules";
}

std::string RulesHistory::file() const
{
    return m_document.store().locations().userRulesFile();
}

std::string RulesHistory::exportName() const
{
    return m_document.store().locations().exchangeFileName();
}

std::unique_ptr<history::Journal> RulesHistory::openJournal() const
{
    return m_document.openJournal();
}

DifferenceTablePtr RulesHistory::compare(
    const std::string& before, const std::string& after, const std::stop_token& stop) const
{
    const std::vector<rules::RuleValue> earlier = rules::rulesOfText(before);
    if (stop.stop_requested())
        return nullptr;
    const std::vector<rules::RuleValue> later = rules::rulesOfText(after);
    return stop.stop_requested() ? nullptr : differenceTable(rulesDifference(earlier, later));
}

void RulesHistory::keepPresentVersion()
{
    m_document.keepPresentVersion();
}

std::optional<std::string> RulesHistory::restore(std::int64_t version)
{
    if (!m_document.restore(version))
        return "Version " + std::to_string(version) + " can no longer be read.";
    return m_document.failure();
}

void RulesHistory::versionsWereForgotten()
{
    m_document.forgetSteps();
}

} // namespace quorvane::workflow
