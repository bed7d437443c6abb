#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/PlaceOptions.h"
#include "cli/RowOutput.h"
#include "cli/SelectionOptions.h"

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class ListCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("list", "Print the rules");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        command.add_flag("--label-system", m_selection.labelAsSystem, "Read FILE as a system rules file");
        m_options.addTo(command, m_selection);
        m_place.addTo(command);
        addFileOption(command, m_selection);
        return command;
    }

    void check() override
    {
        m_options.finish(m_selection, m_place.isNowhere());
        if (m_selection.labelAsSystem && !m_selection.file)
            throw CLI::ValidationError("--label-system", "says how FILE is read, and there is none");
    }

    int run(const CommandContext& context) override
    {
        const auto place = m_place.open();
        if (!place)
            return ExitStatus::failed;
        const OpenedStore opened = openStore(m_selection, context);
        const auto rows = chosenRows(opened.store, m_selection, *place);
        if (!rows)
            return opened.hasFailed ? ExitStatus::failed : ExitStatus::usage;
        Output output;
        writeRows(output, opened.store, *rows, m_selection.includeSystemRules, *place, m_asJson);
        return output.finish() && !opened.hasFailed ? ExitStatus::success : ExitStatus::failed;
    }

private:
    RuleSelection m_selection;
    SelectionOptions m_options;
    PlaceOptions m_place;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeListCommand()
{
    return std::make_unique<ListCommand>();
}

} // namespace quorvane::cli
