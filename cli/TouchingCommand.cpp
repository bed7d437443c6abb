#include "cli/Commands.h"
#include "cli/OperationLetters.h"
#include "cli/Output.h"
#include "cli/PlaceOptions.h"
#include "cli/RowOutput.h"
#include "cli/SelectionOptions.h"
#include "rules/RuleCodes.h"
#include "workflow/TouchingRules.h"

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class TouchingCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("touching", "Print the rules that are about a path");
        command.footer(
            "These are path rules that equal it, prefix rules that it begins with, suffix rules that it ends "
            "with,\nand rules about every path. Which of them wins is decided where rules are enforced.");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        command
            .add_option("--process", m_question.process,
                "Only rules of this program or whole process string, and of any program")
            ->type_name("PROCESS");
        command
            .add_option(
                "--ops", m_operations, "Only rules with one of these operations: letters out of rwcmx")
            ->type_name("OPS")
            ->check(onlyOperationLetters);
        command.add_flag("--system", m_selection.includeSystemRules, "Include system rules");
        m_place.addTo(command);
        command.add_option("PATH", m_question.path, "The path of a file or folder")->required();
        addFileOption(command, m_selection);
        return command;
    }

    void check() override
    {
        if (m_operations)
            m_question.operations = rules::operationsForString(*m_operations);
    }

    int run(const CommandContext& context) override
    {
        const auto place = m_place.open();
        if (!place)
            return ExitStatus::failure;
        const OpenedStore opened
            = m_selection.file ? openInput(*m_selection.file, context) : openStore(m_selection, context);
        const bool includeSystemRules = m_selection.includeSystemRules;
        const auto present = opened.store.rows();
        std::vector<std::size_t> rows;
        present->forEach(includeSystemRules, [&](std::size_t row, const rules::RuleRef& rule) {
            if (touches(rule, m_question))
                rows.push_back(row);
        });
        Output output;
        writeRows(output, opened.store, rows, includeSystemRules, *place, m_asJson);
        const bool isWhole = opened.isComplete && !opened.hasFailed;
        return output.finish() && isWhole ? ExitStatus::success : ExitStatus::failure;
    }

private:
    RuleSelection m_selection;
    PlaceOptions m_place;
    workflow::TouchQuestion m_question;
    std::optional<std::string> m_operations;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeTouchingCommand()
{
    return std::make_unique<TouchingCommand>();
}

} // namespace quorvane::cli
