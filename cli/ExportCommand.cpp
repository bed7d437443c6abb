#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/SelectionOptions.h"
#include "workflow/RulesExport.h"

#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

std::string onlyRowNumber(const std::string& text)
{
    std::size_t row = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, row);
    return error == std::errc() && stop == end ? "" : "'" + text + "' is not the number of a row";
}

class ExportCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("export", "Write rules to an exchange file");
        command.add_option("OUT", m_out, "The file to write")->required();
        command.add_option("--row", m_rows, "Write this row of the list; may be given several times")
            ->take_all()
            ->allow_extra_args(false)
            ->check(onlyRowNumber);
        m_options.addTo(command, m_selection);
        addFileOption(command, m_selection);
        return command;
    }

    void check() override { m_options.finish(m_selection); }

    int run(const CommandContext& context) override
    {
        const OpenedStore opened = openStore(m_selection, context);
        // An export of what could not be read would leave an empty file where a good one may have been.
        if (!opened.isComplete) {
            complain("nothing was written: not all rules could be read");
            return 1;
        }
        const auto rules = chosenRules(*opened.store);
        if (!rules)
            return 1;
        const WriteResult result = exportRules(m_out, *rules);
        for (const std::string& warning : result.warnings)
            complain("warning: " + warning);
        if (!result.message)
            return opened.hasFailed ? 1 : 0;
        complain(*result.message);
        return 1;
    }

private:
    // None, after a complaint, when a row is not there.
    std::optional<std::vector<RuleRef>> chosenRules(RuleManager& store) const
    {
        if (m_rows.empty())
            return store.userRules();
        std::vector<RuleRef> rules;
        const std::size_t total = store.totalRules(m_selection.includeSystemRules);
        for (const std::size_t row : m_rows) {
            if (row >= total) {
                complain("nothing was written: there is no row " + std::to_string(row) + ", there are "
                    + std::to_string(total) + " rows");
                return std::nullopt;
            }
            rules.push_back(store.ruleAtIndex(row, m_selection.includeSystemRules));
        }
        return rules;
    }

    RuleSelection m_selection;
    SelectionOptions m_options;
    std::string m_out;
    std::vector<std::size_t> m_rows;
};

} // namespace

std::unique_ptr<Command> makeExportCommand()
{
    return std::make_unique<ExportCommand>();
}

} // namespace quorvane
