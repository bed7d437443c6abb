#include "cli/CommandFiles.h"
#include "cli/Commands.h"
#include "cli/DifferenceOutput.h"
#include "cli/Output.h"
#include "rules/FileDifference.h"

#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class DiffCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command
            = *program.add_subcommand("diff", "Print the rules by which one rules file differs from another");
        command.footer(
            "Prints rules of B that A lacks, of A that B lacks, and rules whose tag or creation time "
            "differ.\nThe status is 1 when there are any, and 3 after a failure.");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        command.add_option("A", m_before, "A rules file")->required();
        command.add_option("B", m_after, "The rules file that it is compared with")->required();
        return command;
    }

    int run(const CommandContext& /*context*/) override
    {
        const auto before = readText(m_before);
        const auto after = readText(m_after);
        if (!before || !after)
            return ExitStatus::failure;
        const rules::RulesDifference difference = rules::fileDifference(before->bytes(), after->bytes());
        Output output;
        writeDifference(output, difference, m_asJson);
        if (!output.finish())
            return ExitStatus::failure;
        return difference.isEmpty() ? ExitStatus::success : ExitStatus::findings;
    }

private:
    std::string m_before;
    std::string m_after;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeDiffCommand()
{
    return std::make_unique<DiffCommand>();
}

} // namespace quorvane::cli
