#include "cli/RowOutput.h"

#include "cli/Output.h"
#include "cli/RuleJson.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RuleCells.h"

#include <algorithm>
#include <array>
#include <string>

namespace quorvane::cli {

namespace {

bool isRedundant(const rules::RuleManager& store, const rules::PolicyRule& rule)
{
    return store.isRedundant(rule);
}

bool isRedundant(const rules::RuleManager&, const rules::WatchRule&)
{
    return false;
}

bool isValid(const rules::PolicyRule& rule, const workflow::RulesPlace& place)
{
    return isValidApplicationPath(rule, shownApplicationNameForRule(rule), place);
}

bool isValid(const rules::WatchRule&, const workflow::RulesPlace&)
{
    return true;
}

template <class Rule>
std::string rowLine(
    const rules::RuleManager& store, std::size_t row, const Rule& rule, const workflow::RulesPlace& place)
{
    const auto& fields = rule.fields();
    JsonLine line;
    line.add("row", row);
    addProperties(line, fields);
    line.add("sequence", fields.sequence);
    line.add("system", fields.system);
    line.add("ruleState", rule.getRuleState());
    line.add("applicationName", applicationNameForRule(rule));
    line.add("applicationGroupIdentity", applicationGroupIdentityForRule(rule));
    line.add("redundant", isRedundant(store, rule));
    if (place.isNowhere())
        line.add("valid", nullptr);
    else
        line.add("valid", isValid(rule, place));
    return line.finish();
}

// The texts of one row, in the order in which they are printed.
using PrintedRow = std::array<std::string, 7>;

std::string joined(const std::string& text, const std::string& description)
{
    return text + (text.empty() || description.empty() ? "" : ", ") + description;
}

PrintedRow printedRow(const rules::RuleManager& store, const rules::RuleRows& rows, std::size_t row,
    bool includeSystemRules, const workflow::RulesPlace& place)
{
    const auto cell = [&](workflow::RuleColumn column) {
        return ruleCell(store, rows, row, includeSystemRules, column, place);
    };
    const workflow::RuleCell application = cell(workflow::RuleColumn::application);
    return {std::to_string(row), cell(workflow::RuleColumn::ruleClass).text,
        cell(workflow::RuleColumn::type).text, cell(workflow::RuleColumn::operations).text,
        joined(application.text, application.description), cell(workflow::RuleColumn::tag).text,
        visitRule(rows.at(row, includeSystemRules),
            [](const auto& rule) { return std::string(rule.fields().path.view()); })};
}

// The columns are wide enough for most texts; a longer one shifts the rest of its line. They are the same for
// all lists, so that a comparison of two shows only the rules that differ.
void writeLine(Output& output, const PrintedRow& row)
{
    constexpr std::array<std::size_t, 6> widths{6, 5, 6, 5, 32, 16};
    std::string line;
    for (std::size_t column = 0; column < row.size(); ++column) {
        std::string text = printable(row[column]);
        if (column < widths.size())
            text.resize(std::max(text.size(), widths[column]), ' ');
        line.append(text).append(column + 1 < row.size() ? "  " : "\n");
    }
    output.write(line);
}

} // namespace

void writeRows(Output& output, const rules::RuleManager& store, const std::vector<std::size_t>& rows,
    bool includeSystemRules, const workflow::RulesPlace& place, bool asJson)
{
    if (!asJson)
        writeLine(output, {"Row", "Class", "Type", "Ops", "Application", "Tag", "Path"});
    const auto present = store.rows();
    for (const std::size_t row : rows) {
        if (asJson)
            output.write(visitRule(present->at(row, includeSystemRules),
                [&](const auto& rule) { return rowLine(store, row, rule, place); }));
        else
            writeLine(output, printedRow(store, *present, row, includeSystemRules, place));
    }
}

} // namespace quorvane::cli
