#include "cli/CommandFiles.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/RuleJson.h"
#include "rules/JoinedLines.h"
#include "workflow/DifferenceText.h"

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

std::string jsonLines(const rules::JoinedLine& line)
{
    std::string lines;
    for (const rules::JoinedRule& rule : line.rules) {
        Json object{{"line", line.number}, {"cut", rule.cut}};
        object.update(propertiesJson(rule.rule));
        lines += jsonLine(object);
    }
    return lines;
}

std::string cutText(const rules::JoinedRule& rule)
{
    std::string text;
    for (const std::string_view name : rule.cut)
        text.append(text.empty() ? "    (cut: " : ", ").append(name);
    return text.empty() ? text : text + ")";
}

std::string textLines(const rules::JoinedLine& line)
{
    std::string lines
        = "line " + std::to_string(line.number) + " holds " + std::to_string(line.rules.size()) + " rules:\n";
    for (const rules::JoinedRule& rule : line.rules)
        lines += "    " + printable(workflow::ruleText(rule.rule)) + cutText(rule) + "\n";
    return lines;
}

class RescueCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "rescue", "Take lines of a rules file apart that hold several rules since a cut has joined them");
        command.footer("The status is 1 when there are joined lines, and 3 after a failure.");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        addOutOption(command, m_out, "Write the file there, each of its rules on a line of its own");
        command.add_option("FILE", m_file, "A rules file")->required();
        return command;
    }

    int run(const CommandContext& /*context*/) override
    {
        const workflow::RulesInput input = workflow::RulesInput::read(m_file);
        if (input.problem()) {
            printError(printable(*input.problem()));
            return ExitStatus::failure;
        }
        const std::vector<rules::JoinedLine> joined = rules::joinedLines(input.bytes());
        if (m_out && !writeResult(*m_out, rules::rescuedText(input.bytes())))
            return ExitStatus::failure;
        Output output;
        for (const rules::JoinedLine& line : joined)
            output.write(m_asJson ? jsonLines(line) : textLines(line));
        if (!output.finish()) {
            if (m_out)
                printError("'" + printable(*m_out) + "' is written all the same");
            return ExitStatus::failure;
        }
        return joined.empty() ? ExitStatus::success : ExitStatus::findings;
    }

private:
    std::string m_file;
    std::optional<std::string> m_out;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeRescueCommand()
{
    return std::make_unique<RescueCommand>();
}

} // namespace quorvane::cli
