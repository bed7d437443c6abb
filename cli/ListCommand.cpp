#include "cli/Commands.h"
#include "cli/Output.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RuleCells.h"

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

namespace quorvane {

namespace {

using Json = nlohmann::ordered_json;

Json jsonText(const NullableText& text)
{
    return text.isNull() ? Json(nullptr) : Json(std::string(text.view()));
}

Json jsonRow(const RuleManager& store, std::size_t row, const PolicyRule& rule)
{
    const PolicyRuleFields& fields = rule.fields();
    return {{"row", row}, {"kind", "policy"}, {"policyClass", fields.policyClass},
        {"policyType", fields.policyType}, {"path", jsonText(fields.path)},
        {"processName", jsonText(fields.processName)}, {"tag", jsonText(fields.tag)},
        {"constraint", jsonText(fields.constraint)}, {"operations", fields.operations},
        {"flags", fields.flags}, {"created", fields.created}, {"sequence", fields.sequence},
        {"system", fields.system}, {"ruleState", rule.getRuleState()},
        {"applicationName", applicationNameForRule(rule)},
        {"applicationGroupIdentity", applicationGroupIdentityForRule(rule)},
        {"redundant", store.isRedundant(rule)},
        {"valid", isValidApplicationPath(rule, shownApplicationNameForRule(rule))}};
}

Json jsonRow(const RuleManager&, std::size_t row, const WatchRule& rule)
{
    const WatchRuleFields& fields = rule.fields();
    return {{"row", row}, {"kind", "watch"}, {"policyClass", rule.getPolicyClass()},
        {"policyType", fields.policyType}, {"path", jsonText(fields.path)},
        {"processName", jsonText(fields.processName)}, {"tag", jsonText(fields.tag)}, {"constraint", nullptr},
        {"operations", fields.operations}, {"flags", fields.flags}, {"created", nullptr},
        {"sequence", fields.sequence}, {"system", fields.system}, {"ruleState", rule.getRuleState()},
        {"applicationName", applicationNameForRule(rule)},
        {"applicationGroupIdentity", applicationGroupIdentityForRule(rule)}, {"redundant", false},
        {"valid", true}};
}

void printJson(Output& output, const RuleManager& store, bool includeSystemRules)
{
    const std::size_t total = store.totalRules(includeSystemRules);
    for (std::size_t row = 0; row < total; ++row) {
        const Json object = askRule(store.ruleAtIndex(row, includeSystemRules),
            [&](const auto& rule) { return jsonRow(store, row, rule); });
        output.write(object.dump() + "\n");
    }
}

// The texts of one row, in the order they are printed.
using PrintedRow = std::array<std::string, 7>;

std::string joined(const std::string& text, const std::string& description)
{
    return text + (text.empty() || description.empty() ? "" : ", ") + description;
}

PrintedRow printedRow(
    const RuleManager& store, const RuleRows& rows, std::size_t row, bool includeSystemRules)
{
    const auto cell
        = [&](RuleColumn column) { return ruleCell(store, rows, row, includeSystemRules, column); };
    const RuleCell application = cell(RuleColumn::application);
    return {std::to_string(row), cell(RuleColumn::ruleClass).text, cell(RuleColumn::type).text,
        cell(RuleColumn::operations).text, joined(application.text, application.description),
        cell(RuleColumn::tag).text, askRule(rows.at(row, includeSystemRules), [](const auto& rule) {
            return std::string(rule.fields().path.view());
        })};
}

// Wide enough for most; a longer text pushes the rest of its line to the right.
void printTable(Output& output, const RuleManager& store, bool includeSystemRules)
{
    constexpr std::array<std::size_t, 6> widths{6, 5, 6, 5, 28, 16};
    const auto print = [&](const PrintedRow& row) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column) {
            std::string text = printable(row[column]);
            if (column < widths.size())
                text.resize(std::max(text.size(), widths[column]), ' ');
            line.append(text).append(column + 1 < row.size() ? "  " : "\n");
        }
        output.write(line);
    };
    print({"Row", "Class", "Type", "Ops", "Application", "Tag", "Path"});
    const auto rows = store.rows();
    for (std::size_t row = 0; row < rows->count(includeSystemRules); ++row)
        print(printedRow(store, *rows, row, includeSystemRules));
}

} // namespace

int listCommand(const CommandContext& context, const RuleSelection& selection, bool asJson)
{
    const OpenedStore opened = openStore(selection, context.locations, context.log);
    Output output;
    if (asJson)
        printJson(output, *opened.store, selection.includeSystemRules);
    else
        printTable(output, *opened.store, selection.includeSystemRules);
    return output.finish() && !opened.hasFailed ? 0 : 1;
}

int optionsCommand(const CommandContext& context, bool asJson)
{
    const OpenedStore opened = openStore({}, context.locations, context.log);
    Output output;
    for (const FilterOption& option : opened.store->filterOptions()) {
        if (asJson)
            output.write(Json{{"name", jsonText(option.name)}, {"value", option.value}}.dump() + "\n");
        else
            output.write(printable(option.name.written()) + " " + std::to_string(option.value) + "\n");
    }
    return output.finish() && !opened.hasFailed ? 0 : 1;
}

} // namespace quorvane
