#include "workflow/ImportForesight.h"

#include "workflow/ApplicationValidation.h"
#include "workflow/ImportCells.h"

#include <algorithm>

namespace quorvane::workflow {

namespace {

constexpr unsigned bitOf(Foresight kind)
{
    return 1U << static_cast<unsigned>(kind);
}

bool isCutBy(const rules::RuleRef& rule, rules::LineEnds lineEnds)
{
    return lineEnds == rules::LineEnds::cut && visitRule(rule, [](const auto& record) {
        return !readsBackAsWritten(record.fields(), rules::LineEnds::cut)
            && readsBackAsWritten(record.fields(), rules::LineEnds::whole);
    });
}

} // namespace

std::int64_t sequenceOf(const rules::RuleRef& rule)
{
    return visitRule(rule, [](const auto& record) { return record.sequence(); });
}

std::string_view foresightTitle(Foresight kind)
{
    static constexpr std::array<std::string_view, foresightKinds> titles{
        "New", "Present", "Redundant", "Failing", "Joined"};
    return titles[static_cast<std::size_t>(kind)];
}

std::string_view foresightHelp(Foresight kind)
{
    static constexpr std::array<std::string_view, foresightKinds> helps{
        "Rules that you do not have yet",
        "Rules that you have already, which an import leaves as they are",
        "New rules that another rule of the file, or one of yours, covers",
        "Rules whose program is gone or does not meet the constraint",
        "Rules on lines that hold several",
    };
    return helps[static_cast<std::size_t>(kind)];
}

RuleSequences failingRules(const rules::RuleRows& rows, const RulesPlace& place, const std::stop_token& stop)
{
    RuleSequences failing;
    for (std::size_t row = 0; row < rows.count(false) && !stop.stop_requested(); ++row) {
        const rules::RuleRef& rule = rows.at(row, false);
        if (programFault(rule, place))
            failing.insert(sequenceOf(rule));
    }
    return failing;
}

ImportForesight::ImportForesight(const rules::RuleManager& present, const rules::RuleManager& reviewed,
    const rules::RuleManager* joined, rules::LineEnds lineEnds)
    : m_present(present)
    , m_reviewed(reviewed)
    , m_joined(joined)
    , m_lineEnds(lineEnds)
    , m_rows(reviewed.rows())
{
}

bool ImportForesight::examine(std::size_t rules)
{
    const std::size_t all = m_rows->count(false);
    const std::size_t end = std::min(all, m_next + rules);
    for (; m_next < end; ++m_next) {
        const rules::RuleRef& rule = m_rows->at(m_next, false);
        const unsigned kinds = kindsOf(rule);
        m_kinds[sequenceOf(rule)] = kinds;
        for (std::size_t kind = 0; kind < foresightKinds; ++kind)
            m_counts[kind] += (kinds >> kind) & 1U;
        if (isCutBy(rule, m_lineEnds))
            ++m_countOfCut;
    }
    return m_next < all;
}

unsigned ImportForesight::kindsOf(const rules::RuleRef& rule) const
{
    unsigned kinds = 0;
    if (isPresent(m_present, rule))
        kinds |= bitOf(Foresight::present);
    else
        kinds |= bitOf(Foresight::fresh) | (isCovered(rule) ? bitOf(Foresight::redundant) : 0U);
    if (m_joined != nullptr && isPresent(*m_joined, rule))
        kinds |= bitOf(Foresight::joined);
    return kinds;
}

bool ImportForesight::isCovered(const rules::RuleRef& rule) const
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    return policy != nullptr && (m_reviewed.isRedundant(*policy) || m_present.isRedundant(*policy));
}

bool ImportForesight::is(const rules::RuleRef& rule, Foresight kind) const
{
    if (kind == Foresight::failing)
        return m_failing != nullptr && m_failing->contains(sequenceOf(rule));
    const auto kinds = m_kinds.find(sequenceOf(rule));
    return kinds != m_kinds.end() && (kinds->second & bitOf(kind)) != 0;
}

std::size_t ImportForesight::count(Foresight kind) const
{
    if (kind == Foresight::failing)
        return m_failing == nullptr ? 0 : m_failing->size();
    return m_counts[static_cast<std::size_t>(kind)];
}

} // namespace quorvane::workflow
