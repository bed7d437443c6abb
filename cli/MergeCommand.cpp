#include "cli/CommandFiles.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "rules/FileMerge.h"
#include "workflow/DifferenceText.h"

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class MergeCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "merge", "Bring together what two sides did to the same rules file, rule by rule");
        command.footer(
            "OURS gets the result, unless OUT does. /dev/null is an empty BASE.\n"
            "The status is 1 when both sides have changed the same rule or text, which is reported,\n"
            "and 3 after a failure.");
        addOutOption(command, m_out, "Write the result there and leave OURS alone");
        command.add_option("BASE", m_base, "The file that both sides began with")->required();
        command.add_option("OURS", m_ours, "The file of one side, whose order stays")->required();
        command.add_option("THEIRS", m_theirs, "The file of the other side")->required();
        return command;
    }

    int run(const CommandContext& /*context*/) override
    {
        const auto base = readText(m_base, true);
        const auto ours = readText(m_ours);
        const auto theirs = readText(m_theirs);
        if (!base || !ours || !theirs)
            return ExitStatus::failure;
        const rules::FileMergeResult merged
            = rules::mergeFiles(base->bytes(), ours->bytes(), theirs->bytes());
        if (!writeResult(m_out.value_or(m_ours), merged.text))
            return ExitStatus::failure;
        for (const rules::FileConflict& conflict : merged.conflicts)
            printError("conflict: " + printable(workflow::conflictText(conflict)));
        return merged.conflicts.empty() ? ExitStatus::success : ExitStatus::findings;
    }

private:
    std::string m_base;
    std::string m_ours;
    std::string m_theirs;
    std::optional<std::string> m_out;
};

} // namespace

std::unique_ptr<Command> makeMergeCommand()
{
    return std::make_unique<MergeCommand>();
}

} // namespace quorvane::cli
