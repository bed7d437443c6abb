#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/PlaceOptions.h"
#include "cli/SelectionOptions.h"
#include "cli/UnwritableWarning.h"
#include "workflow/RulesExport.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

// An exchange file is written as the format has it, whatever the settings for the user's file.
std::size_t countOfUnwritable(const std::vector<rules::RuleRef>& rules)
{
    std::size_t count = 0;
    forEachRule(rules,
        [&count](const rules::RuleRef& rule) { count += readsBack(rule, rules::LineEnds::cut) ? 0U : 1U; });
    return count;
}

class ExportCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("export", "Write rules to an exchange file");
        command.add_option("OUT", m_out, "The file to write")->required();
        m_options.addTo(command, m_selection);
        m_place.addTo(command);
        addFileOption(command, m_selection);
        return command;
    }

    void check() override { m_options.finish(m_selection, m_place.isNowhere()); }

    int run(const CommandContext& context) override
    {
        const auto place = m_place.open();
        if (!place)
            return ExitStatus::failed;
        const OpenedStore opened = openStore(m_selection, context);
        // Exporting unreadable rules could replace a good file by an empty one.
        if (!opened.isComplete) {
            printError("nothing was written: not all rules could be read");
            return ExitStatus::failed;
        }
        const auto rules = chosenRules(opened.store, *place);
        if (!rules)
            return ExitStatus::usage;
        warnOfUnwritableRules(countOfUnwritable(*rules), "exported");
        const rules::WriteResult result = workflow::exportRules(m_out, *rules);
        for (const std::string& warning : result.warnings)
            printError("warning: " + warning);
        if (!result.message)
            return opened.hasFailed ? ExitStatus::failed : ExitStatus::success;
        printError(*result.message);
        return ExitStatus::failed;
    }

private:
    // Without a selection of rows, all of the user's rules, whatever the filter. Rows selected only by number
    // are written in the order given, repetitions included. None, with an error printed, when a row does not
    // exist.
    std::optional<std::vector<rules::RuleRef>> chosenRules(
        const rules::RuleManager& store, const workflow::RulesPlace& place) const
    {
        const workflow::RuleCriteria& criteria = m_selection.criteria;
        if (criteria.isEmpty())
            return store.userRules();
        auto rows = chosenRows(store, m_selection, place);
        if (rows && criteria.isOfRowsAlone())
            rows = criteria.rows;
        return rows ? std::optional(rulesOf(store, *rows, m_selection.includeSystemRules)) : std::nullopt;
    }

    RuleSelection m_selection;
    SelectionOptions m_options;
    std::string m_out;
    PlaceOptions m_place;
};

} // namespace

std::unique_ptr<Command> makeExportCommand()
{
    return std::make_unique<ExportCommand>();
}

} // namespace quorvane::cli
