#include "cli/ChangeOptions.h"
#include "cli/Commands.h"
#include "cli/UserDocument.h"
#include "cli/UserSelection.h"
#include "workflow/PlannedChange.h"

#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class RemoveCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "remove", "Remove rules from the current user's configuration, all at once");
        command.footer("Rows are counted as list counts them. With --finding redundant a rule goes only "
                       "while a rule that stays\ncovers it.");
        m_change.addTo(command);
        m_selection.addTo(command);
        return command;
    }

    void check() override { m_selection.finish(); }

    int run(const CommandContext& context) override
    {
        const auto place = m_selection.openPlace();
        const auto user = place ? m_change.open(context) : nullptr;
        if (!user)
            return ExitStatus::failure;
        const auto chosen = m_selection.choose(user->store(), *place);
        if (!chosen)
            return ExitStatus::usage;
        const std::vector<rules::RuleRef> removable = removableOf(user->store(), chosen->rules, *place);
        workflow::PlannedChange plan = workflow::removalOf(user->store(), removable, user->lineEnds());
        plan.unchanged = chosen->rules.size() - removable.size();
        return m_change.carryOut(*user, plan, "Remove", chosen->rows);
    }

private:
    // Rules chosen only for their redundancy are removed one by one, so that one of those covering each other
    // stays.
    std::vector<rules::RuleRef> removableOf(rules::RuleManager& store,
        const std::vector<rules::RuleRef>& chosen, const workflow::RulesPlace& place) const
    {
        std::vector<workflow::FindingKind> others = m_selection.findings();
        if (std::erase(others, workflow::FindingKind::redundant) == 0)
            return chosen;
        const std::vector<rules::RuleRef> gone
            = others.empty() ? std::vector<rules::RuleRef>() : m_selection.rulesWith(store, place, others);
        return workflow::dispensableRules(store, chosen, gone);
    }

    UserSelection m_selection;
    ChangeOptions m_change;
};

} // namespace

std::unique_ptr<Command> makeRemoveCommand()
{
    return std::make_unique<RemoveCommand>();
}

} // namespace quorvane::cli
