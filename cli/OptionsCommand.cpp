#include "cli/Commands.h"
#include "cli/JsonText.h"
#include "cli/Output.h"
#include "cli/RuleSelection.h"

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class OptionsCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("options", "Print the options of the configuration");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        return command;
    }

    int run(const CommandContext& context) override
    {
        const OpenedStore opened = openStore({}, context);
        Output output;
        for (const rules::FilterOption& option : opened.store.filterOptions()) {
            if (m_asJson)
                output.write(Json{{"name", jsonText(option.name)}, {"value", option.value}}.dump() + "\n");
            else
                output.write(printable(option.name.written()) + " " + std::to_string(option.value) + "\n");
        }
        return output.finish() && !opened.hasFailed ? 0 : 1;
    }

private:
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeOptionsCommand()
{
    return std::make_unique<OptionsCommand>();
}

} // namespace quorvane::cli
