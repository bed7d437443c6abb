#include "cli/Commands.h"
#include "cli/CompletionScript.h"
#include "cli/Output.h"
#include "cli/RuleSelection.h"
#include "rules/ApplicationIdentity.h"

#include <set>
#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

// A property of a rule for completion; empty for an unknown kind.
template <class Rule> std::string valueOf(const Rule& rule, const std::string& kind)
{
    if (kind == "tags")
        return std::string(rule.fields().tag.view());
    if (kind == "paths")
        return std::string(rule.fields().path.view());
    if (kind == "processes")
        return std::string(rule.fields().processName.view());
    return kind == "programs" ? applicationPathForRule(rule) : std::string();
}

class CompletionCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        m_program = &program;
        CLI::App& command = *program.add_subcommand("completion", "Print the completion script of a shell");
        command.add_option("SHELL", m_shell, "The shell")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish"}));
        // Only for the scripts, and so hidden from the help.
        command.add_option("--values", m_values)
            ->group("")
            ->check(CLI::IsMember({"tags", "processes", "programs", "paths"}));
        return command;
    }

    int run(const CommandContext& context) override
    {
        Output output;
        if (m_values.empty())
            output.write(completionScript(*m_program, m_shell).value_or(""));
        else
            printValues(output, context);
        return output.finish() ? ExitStatus::success : ExitStatus::failure;
    }

private:
    // Prints values without line ends, each once.
    void printValues(Output& output, const CommandContext& context) const
    {
        const OpenedStore opened = openStore({}, context);
        std::set<std::string> values;
        for (const rules::RuleRef& rule : opened.store.userRules())
            values.insert(visitRule(rule, [this](const auto& record) { return valueOf(record, m_values); }));
        for (const std::string& value : values) {
            if (!value.empty() && printable(value) == value)
                output.write(value + "\n");
        }
    }

    const CLI::App* m_program = nullptr;
    std::string m_shell;
    std::string m_values;
};

} // namespace

std::unique_ptr<Command> makeCompletionCommand()
{
    return std::make_unique<CompletionCommand>();
}

} // namespace quorvane::cli
