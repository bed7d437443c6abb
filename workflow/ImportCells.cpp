#include "workflow/ImportCells.h"

#include "rules/ApplicationIdentity.h"

#include <array>

namespace quorvane::workflow {

namespace {

constexpr std::array<std::string_view, importColumnCount> importTitles{
    "Application", "", "Class", "Type", "Path", "Operations"};
constexpr std::array<std::optional<rules::SortKey>, importColumnCount> importSortKeys{
    rules::SortKey::processShortName, std::nullopt, rules::SortKey::shownClass, rules::SortKey::policyType,
    rules::SortKey::path, rules::SortKey::operations};

std::optional<ProgramFault> faultOfImported(
    const rules::PolicyRule& rule, std::string_view applicationName, const RulesPlace& place)
{
    const std::string path = applicationPathForRule(rule);
    if (rule.fields().system || applicationName.starts_with("Any Process") || path.ends_with("/")
        || place.isNowhere() || place.facts().exists(path))
        return std::nullopt;
    return ProgramFault::missing;
}

RuleCell unmarkedCell(const rules::RuleManager& reviewed, const rules::RuleRows& rows, std::size_t row,
    ImportColumn column, const RulesPlace& place)
{
    switch (column) {
    case ImportColumn::application:
        return applicationCell(
            rows, row, false, place, [&place](const rules::PolicyRule& policy, std::string_view name) {
                return faultOfImported(policy, name, place);
            });
    case ImportColumn::tick:
        return {};
    case ImportColumn::ruleClass:
        return ruleCell(reviewed, rows, row, false, RuleColumn::ruleClass);
    case ImportColumn::type:
        return ruleCell(reviewed, rows, row, false, RuleColumn::type);
    case ImportColumn::path: {
        const rules::RuleRef& rule = rows.at(row, false);
        return pathCell(rule, pathFindingsForRule(reviewed, rule, place));
    }
    case ImportColumn::operations:
        return ruleCell(reviewed, rows, row, false, RuleColumn::operations);
    }
    return {};
}

void markAsPresent(RuleCell& cell, ImportColumn column)
{
    cell.italic = true;
    // The path's colour has a meaning already, and a grey tick would look disabled.
    if (column != ImportColumn::path && column != ImportColumn::tick)
        cell.color = CellColor::grey;
    describe(cell, "already present");
    if (!cell.toolTip.empty())
        cell.toolTip += "\n";
    cell.toolTip += "This rule is already present.";
}

} // namespace

std::string_view importColumnTitle(ImportColumn column)
{
    return importTitles[static_cast<std::size_t>(column)];
}

std::optional<rules::SortKey> importColumnSortKey(ImportColumn column)
{
    return importSortKeys[static_cast<std::size_t>(column)];
}

RuleCell importCell(const rules::RuleManager& reviewed, const rules::RuleManager& present,
    const rules::RuleRows& rows, std::size_t row, ImportColumn column, const RulesPlace& place)
{
    RuleCell cell = unmarkedCell(reviewed, rows, row, column, place);
    if (column != ImportColumn::application && isPresent(present, rows.at(row, false)))
        markAsPresent(cell, column);
    return cell;
}

bool isPresent(const rules::RuleManager& store, const rules::RuleRef& rule)
{
    return visitRule(rule, [&store](const auto& record) { return store.firstEqualRule(record) != nullptr; });
}

} // namespace quorvane::workflow
