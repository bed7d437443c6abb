#include "cli/ChangeOptions.h"
#include "cli/Commands.h"
#include "cli/UserDocument.h"
#include "workflow/PlannedChange.h"

#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

std::string onlyProgramPath(const std::string& text)
{
    return text.empty() || text == "any" || text.find(" via ") != std::string::npos
        ? "'" + text + "' is not the path of a program"
        : "";
}

class MoveCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command
            = *program.add_subcommand("move", "Make the rules of one program those of another, all at once");
        command.footer(
            "Also where the program stands as parent or ancestor. Constraints stay; two rules that "
            "become equal are\nfolded into one.");
        command.add_option("OLD", m_from, "The path of the program that the rules are for")
            ->required()
            ->check(onlyProgramPath);
        command.add_option("NEW", m_to, "The path of the program that they become rules of")
            ->required()
            ->check(onlyProgramPath);
        m_change.addTo(command);
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto user = m_change.open(context);
        if (!user)
            return ExitStatus::failure;
        return m_change.carryOut(
            *user, workflow::movingOf(user->store(), m_from, m_to, user->lineEnds()), "Move");
    }

private:
    ChangeOptions m_change;
    std::string m_from;
    std::string m_to;
};

} // namespace

std::unique_ptr<Command> makeMoveCommand()
{
    return std::make_unique<MoveCommand>();
}

} // namespace quorvane::cli
