#include "workflow/RuleCriteria.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "rules/RuleProperties.h"

#include <algorithm>
#include <string_view>

namespace quorvane::workflow {

namespace {

template <class Value, class Wanted> bool isAnyOf(const std::vector<Wanted>& wanted, const Value& value)
{
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

template <class Fields> bool fieldsMeet(const Fields& fields, const RuleCriteria& criteria)
{
    const auto isText = [](const std::vector<std::string>& wanted, const rules::NullableText& text) {
        return wanted.empty() || (!text.isNull() && isAnyOf(wanted, text.view()));
    };
    return isAnyOf(criteria.classes, classOf(fields)) && isAnyOf(criteria.types, fields.policyType)
        && isAnyOf(criteria.tags, fields.tag.view()) && isText(criteria.processes, fields.processName)
        && isText(criteria.paths, fields.path)
        && (criteria.programs.empty()
            || isAnyOf(criteria.programs, applicationPathForProcess(fields.processName)));
}

bool namesNoProperty(const RuleCriteria& criteria)
{
    return criteria.classes.empty() && criteria.types.empty() && criteria.states.empty()
        && criteria.tags.empty() && criteria.processes.empty() && criteria.programs.empty()
        && criteria.paths.empty() && criteria.findings.empty();
}

std::vector<bool> marksOf(const std::vector<std::size_t>& rows, std::size_t count)
{
    std::vector<bool> marks(count, rows.empty());
    for (const std::size_t row : rows) {
        if (row < count)
            marks[row] = true;
    }
    return marks;
}

std::vector<std::size_t> withFindings(const rules::RuleManager& store, bool includeSystemRules,
    const std::vector<std::size_t>& rows, const RuleCriteria& criteria, const RulesPlace& place)
{
    FindingKinds kinds;
    for (const FindingKind kind : criteria.findings)
        kinds.add(kind);
    const RowFindings findings(store, includeSystemRules, {kinds, place});
    std::vector<std::size_t> found;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(found),
        [&findings](std::size_t row) { return !findings.at(row).empty(); });
    return found;
}

} // namespace

bool RuleCriteria::isEmpty() const
{
    return rows.empty() && namesNoProperty(*this);
}

bool RuleCriteria::isOfRowsAlone() const
{
    return !rows.empty() && namesNoProperty(*this);
}

bool hasProperties(const rules::RuleRef& rule, const RuleCriteria& criteria)
{
    return visitRule(rule, [&criteria](const auto& record) {
        return fieldsMeet(*record.value(), criteria)
            && (criteria.states.empty() || isAnyOf(criteria.states, record.getRuleState()));
    });
}

std::optional<std::size_t> missingRow(
    const rules::RuleManager& store, bool includeSystemRules, const RuleCriteria& criteria)
{
    const std::size_t total = store.totalRules(includeSystemRules);
    const auto found = std::find_if(
        criteria.rows.begin(), criteria.rows.end(), [total](std::size_t row) { return row >= total; });
    return found == criteria.rows.end() ? std::nullopt : std::optional(*found);
}

std::vector<std::size_t> rowsMeeting(const rules::RuleManager& store, bool includeSystemRules,
    const RuleCriteria& criteria, const RulesPlace& place)
{
    const auto rows = store.rows();
    const std::size_t count = rows->count(includeSystemRules);
    const std::vector<bool> isNamed = marksOf(criteria.rows, count);
    const bool takesAll = namesNoProperty(criteria);
    std::vector<std::size_t> meeting;
    for (std::size_t row = 0; row < count; ++row) {
        if (isNamed[row] && (takesAll || hasProperties(rows->at(row, includeSystemRules), criteria)))
            meeting.push_back(row);
    }
    return criteria.findings.empty() ? meeting
                                     : withFindings(store, includeSystemRules, meeting, criteria, place);
}

} // namespace quorvane::workflow
