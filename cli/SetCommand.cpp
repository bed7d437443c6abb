#include "cli/ChangeOptions.h"
#include "cli/Commands.h"
#include "cli/UserDocument.h"
#include "cli/UserSelection.h"
#include "rules/RuleCodes.h"
#include "workflow/PlannedChange.h"

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

std::string onlyOperationChange(const std::string& text)
{
    const std::size_t start = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
    return text.find_first_not_of("rwcmx", start) == std::string::npos ? ""
                                                                       : "'" + text
            + "' is not made of the letters rwcmx, behind + or - where they are to be added or removed";
}

workflow::RulePatch::Operations operationChange(const std::string& text)
{
    const std::uint32_t operations = rules::operationsForString(text);
    if (text.starts_with('+'))
        return {workflow::RulePatch::Operations::added, operations};
    if (text.starts_with('-'))
        return {workflow::RulePatch::Operations::removed, operations};
    return {workflow::RulePatch::Operations::replaced, operations};
}

class SetCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command
            = *program.add_subcommand("set", "Change rules of the current user's configuration, all at once");
        command.footer(
            "Rows are counted as list counts them. Two rules that become equal are folded into one. A watch "
            "rule has\nno constraint, and neither becomes another rule nor comes of one.");
        command.add_option("--set-tag", m_patch.tag, "Give the rules this tag")->type_name("T");
        command.add_option("--set-class", m_class, "Make the rules allow or deny")
            ->type_name("C")
            ->check(CLI::IsMember({"allow", "deny", "watch"}));
        command.add_option("--set-ops", m_operations, "Set, add or remove operations: letters out of rwcmx")
            ->type_name("OPS|+OPS|-OPS")
            ->check(onlyOperationChange);
        command
            .add_option("--set-constraint", m_constraint,
                "Bind the rules to this, or with \"auto\" each to its program as it is now")
            ->type_name("C|auto");
        m_change.addTo(command);
        m_selection.addTo(command);
        return command;
    }

    void check() override
    {
        m_selection.finish();
        if (!m_patch.tag && !m_class && !m_operations && !m_constraint)
            throw CLI::RequiredError("--set-tag, --set-class, --set-ops or --set-constraint");
        if (m_class)
            m_patch.ruleClass = *m_class == rules::policyClassDescription(rules::PolicyClass::watch)
                ? rules::PolicyClass::watch
                : rules::policyClassForString(*m_class);
        if (m_operations)
            m_patch.operations = operationChange(*m_operations);
        m_patch.isBoundToProgram = m_constraint == "auto";
        if (!m_patch.isBoundToProgram)
            m_patch.constraint = m_constraint;
    }

    int run(const CommandContext& context) override
    {
        const auto place = m_selection.openPlace();
        const auto user = place ? m_change.open(context) : nullptr;
        if (!user)
            return ExitStatus::failure;
        const auto chosen = m_selection.choose(user->store(), *place);
        if (!chosen)
            return ExitStatus::usage;
        const workflow::PlannedChange plan
            = patchingOf(user->store(), chosen->rules, m_patch, place->facts(), user->lineEnds());
        return m_change.carryOut(*user, plan, "Change", chosen->rows);
    }

private:
    UserSelection m_selection;
    ChangeOptions m_change;
    workflow::RulePatch m_patch;
    std::optional<std::string> m_class;
    std::optional<std::string> m_operations;
    std::optional<std::string> m_constraint;
};

} // namespace

std::unique_ptr<Command> makeSetCommand()
{
    return std::make_unique<SetCommand>();
}

} // namespace quorvane::cli
