#include "cli/Commands.h"
#include "cli/JsonText.h"
#include "cli/Output.h"
#include "cli/SelectionOptions.h"
#include "workflow/RuleFindings.h"

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

std::string jsonLine(std::size_t row, const RuleRef& rule, const RuleFinding& finding)
{
    const Json coveredBy = finding.other == nullptr ? Json(nullptr) : Json(ruleText(*finding.other));
    const std::string_view words = findingReason(finding);
    const Json reason = words.empty() ? Json(nullptr) : Json(words);
    const Json object{{"row", row}, {"finding", findingName(finding.kind)}, {"rule", ruleText(rule)},
        {"coveredBy", coveredBy}, {"reason", reason}};
    return object.dump() + "\n";
}

std::string textLines(std::size_t row, const RuleRef& rule, const RuleFinding& finding)
{
    return "row " + std::to_string(row) + ": " + printable(ruleText(rule)) + "\n    "
        + printable(findingText(finding)) + "\n";
}

class CheckCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("check",
            "Find redundant rules, programs that are gone or do not match, missing paths and rules that do "
            "not read back");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        addFileOption(command, m_selection);
        return command;
    }

    int run(const CommandContext& context) override
    {
        const OpenedStore opened = openStore(m_selection, context);
        const RuleManager& store = *opened.store;
        Output output;
        bool anyFinding = false;
        for (std::size_t row = 0; row < store.totalRules(false); ++row) {
            const RuleRef& rule = store.ruleAtIndex(row, false);
            for (const RuleFinding& finding : findingsForRule(store, rule)) {
                anyFinding = true;
                output.write(m_asJson ? jsonLine(row, rule, finding) : textLines(row, rule, finding));
            }
        }
        // A check of rules that could not be read must not look like a passed one.
        const bool passed = opened.isComplete && !opened.hasFailed && !anyFinding;
        return output.finish() && passed ? 0 : 1;
    }

private:
    RuleSelection m_selection;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeCheckCommand()
{
    return std::make_unique<CheckCommand>();
}

} // namespace quorvane
