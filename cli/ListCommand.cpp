#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/RuleJson.h"
#include "cli/SelectionOptions.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RuleCells.h"

#include <algorithm>
#include <array>

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

Json jsonRow(const RuleManager& store, std::size_t row, const PolicyRule& rule)
{
    const PolicyRuleFields& fields = rule.fields();
    Json object{{"row", row}};
    object.update(propertiesJson(fields));
    object.update(Json{{"sequence", fields.sequence}, {"system", fields.system},
        {"ruleState", rule.getRuleState()}, {"applicationName", applicationNameForRule(rule)},
        {"applicationGroupIdentity", applicationGroupIdentityForRule(rule)},
        {"redundant", store.isRedundant(rule)},
        {"valid", isValidApplicationPath(rule, shownApplicationNameForRule(rule))}});
    return object;
}

Json jsonRow(const RuleManager&, std::size_t row, const WatchRule& rule)
{
    const WatchRuleFields& fields = rule.fields();
    Json object{{"row", row}};
    object.update(propertiesJson(fields));
    object.update(Json{{"sequence", fields.sequence}, {"system", fields.system},
        {"ruleState", rule.getRuleState()}, {"applicationName", applicationNameForRule(rule)},
        {"applicationGroupIdentity", applicationGroupIdentityForRule(rule)}, {"redundant", false},
        {"valid", true}});
    return object;
}

void printJson(Output& output, const RuleManager& store, bool includeSystemRules)
{
    const std::size_t total = store.totalRules(includeSystemRules);
    for (std::size_t row = 0; row < total; ++row) {
        const Json object = askRule(store.ruleAtIndex(row, includeSystemRules),
            [&](const auto& rule) { return jsonRow(store, row, rule); });
        output.write(jsonLine(object));
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

class ListCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("list", "Print the rules");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        command.add_flag("--label-system", m_selection.labelAsSystem, "Read FILE as a system rules file");
        m_options.addTo(command, m_selection);
        addFileOption(command, m_selection);
        return command;
    }

    void check() override
    {
        m_options.finish(m_selection);
        if (m_selection.labelAsSystem && !m_selection.file)
            throw CLI::ValidationError("--label-system", "says how FILE is read, and there is none");
    }

    int run(const CommandContext& context) override
    {
        const OpenedStore opened = openStore(m_selection, context);
        Output output;
        if (m_asJson)
            printJson(output, *opened.store, m_selection.includeSystemRules);
        else
            printTable(output, *opened.store, m_selection.includeSystemRules);
        return output.finish() && !opened.hasFailed ? 0 : 1;
    }

private:
    RuleSelection m_selection;
    SelectionOptions m_options;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeListCommand()
{
    return std::make_unique<ListCommand>();
}

} // namespace quorvane
