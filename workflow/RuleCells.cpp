#include "workflow/RuleCells.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "workflow/ApplicationValidation.h"

#include <array>

namespace quorvane::workflow {

namespace {

constexpr std::array<std::string_view, ruleColumnCount> ruleTitles{
    "Application", "State", "Class", "Type", "Operations", "Tag", "Path"};
constexpr std::array<rules::SortKey, ruleColumnCount> ruleSortKeys{rules::SortKey::processShortName,
    rules::SortKey::ruleState, rules::SortKey::shownClass, rules::SortKey::policyType,
    rules::SortKey::operations, rules::SortKey::tag, rules::SortKey::path};

std::string applicationToolTip(const rules::PolicyRuleFields& rule)
{
    std::string tip(rule.processName.view());
    if (!rule.constraint.view().empty())
        tip.append("\nConstraint: ").append(rule.constraint.view());
    return tip;
}

RuleCell policyApplicationCell(const rules::PolicyRule& rule, const rules::PolicyRule* previous,
    const RulesPlace& place, const ProgramQuestion& faultOf)
{
    RuleCell cell;
    cell.toolTip = applicationToolTip(rule.fields());
    const std::string name = shownApplicationNameForRule(rule);
    cell.startsGroup = previous == nullptr
        || applicationGroupIdentityForRule(*previous) != applicationGroupIdentityForRule(rule);
    if (cell.startsGroup) {
        cell.text = name;
        cell.iconFile = applicationBundlePathForRule(rule);
        cell.iconRoot = place.root();
        cell.isIconFileMissing = cell.iconFile->starts_with('/') && place.isMissing(*cell.iconFile);
    } else {
        cell.description = name;
    }
    if (const auto fault = faultOf(rule, name)) {
        cell.color = CellColor::red;
        describe(cell, programFaultWords(*fault));
        cell.toolTip += "\n" + findingText({FindingKind::invalidProgram, {}, fault});
    }
    return cell;
}

// Deliberate: a watch rule shows no application; only its description names it.
RuleCell watchApplicationCell(const rules::WatchRule& rule)
{
    RuleCell cell;
    cell.description = shownApplicationNameForRule(rule);
    cell.toolTip = rule.fields().processName.view();
    return cell;
}

RuleCell stateCell(std::int32_t state)
{
    RuleCell cell;
    if (state == rules::RuleState::system) {
        cell.image = StateImage::system;
        cell.description = "system rule";
        cell.toolTip = "A system rule: it can be looked at, not changed.";
    } else if (state == rules::RuleState::recent) {
        cell.image = StateImage::recent;
        cell.description = "new rule";
        cell.toolTip = "A new rule: created within the last day.";
    }
    return cell;
}

std::string shownClass(const rules::PolicyRule& rule)
{
    switch (rule.fields().policyClass) {
    case rules::PolicyClass::allow:
        return "Allow";
    case rules::PolicyClass::deny:
        return "Deny";
    default:
        return "Err";
    }
}

std::string shownClass(const rules::WatchRule&)
{
    return "Watch";
}

std::string shownType(std::int32_t type)
{
    switch (type) {
    case rules::PolicyType::prefix:
        return "Prefix";
    case rules::PolicyType::path:
        return "Path";
    case rules::PolicyType::suffix:
        return "Suffix";
    default:
        return "Err";
    }
}

RuleCell tagCell(const rules::NullableText& tag)
{
    RuleCell cell;
    cell.text = tag.view();
    cell.color = CellColor::blue;
    cell.toolTip = cell.text;
    return cell;
}

RuleCell textCell(std::string text)
{
    RuleCell cell;
    cell.text = std::move(text);
    return cell;
}

} // namespace

std::string_view columnTitle(RuleColumn column)
{
    return ruleTitles[static_cast<std::size_t>(column)];
}

rules::SortKey columnSortKey(RuleColumn column)
{
    return ruleSortKeys[static_cast<std::size_t>(column)];
}

void describe(RuleCell& cell, std::string_view words)
{
    if (!cell.description.empty())
        cell.description += ", ";
    cell.description += words;
}

RuleCell applicationCell(const rules::RuleRows& rows, std::size_t row, bool includeSystemRules,
    const RulesPlace& place, const ProgramQuestion& faultOf)
{
    const rules::RuleRef& rule = rows.at(row, includeSystemRules);
    const rules::PolicyRule* policy = policyRuleIn(rule);
    if (policy == nullptr)
        return watchApplicationCell(*std::get<rules::WatchRulePtr>(rule));
    return policyApplicationCell(
        *policy, row > 0 ? policyRuleIn(rows.at(row - 1, includeSystemRules)) : nullptr, place, faultOf);
}

RuleCell pathCell(const rules::RuleRef& rule, const std::vector<RuleFinding>& findings)
{
    RuleCell cell;
    cell.text = visitRule(rule, [](const auto& record) { return std::string(record.fields().path.view()); });
    cell.toolTip = cell.text;
    for (const RuleFinding& finding : findings) {
        cell.toolTip += "\n" + findingText(finding);
        if (finding.kind == FindingKind::redundant) {
            cell.color = CellColor::orange;
            describe(cell, "redundant");
        } else if (finding.kind == FindingKind::missingPath) {
            // Orange goes before red, whatever is missing.
            if (cell.color == CellColor::black)
                cell.color = CellColor::red;
            describe(cell, "file not found");
        } else {
            describe(cell, "does not read back");
        }
    }
    return cell;
}

RuleCell ruleCell(const rules::RuleManager& store, const rules::RuleRows& rows, std::size_t row,
    bool includeSystemRules, RuleColumn column, const RulesPlace& place)
{
    const rules::RuleRef& rule = rows.at(row, includeSystemRules);
    switch (column) {
    case RuleColumn::application:
        return applicationCell(rows, row, includeSystemRules, place,
            [&place](const rules::PolicyRule& policy, std::string_view name) {
                return programFault(policy, name, place);
            });
    case RuleColumn::state:
        return stateCell(visitRule(rule, [](const auto& record) { return record.getRuleState(); }));
    case RuleColumn::ruleClass:
        return textCell(visitRule(rule, [](const auto& record) { return shownClass(record); }));
    case RuleColumn::type:
        return textCell(
            visitRule(rule, [](const auto& record) { return shownType(record.fields().policyType); }));
    case RuleColumn::operations:
        return textCell(visitRule(rule, [](const auto& record) { return operationsForRule(record); }));
    case RuleColumn::tag:
        return tagCell(visitRule(rule, [](const auto& record) { return record.fields().tag; }));
    case RuleColumn::path:
        return pathCell(rule, pathFindingsForRule(store, rule, place));
    }
    return {};
}

} // namespace quorvane::workflow
