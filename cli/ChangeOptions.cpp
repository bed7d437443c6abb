#include "cli/ChangeOptions.h"

#include "cli/Command.h"
#include "cli/DifferenceOutput.h"
#include "cli/Output.h"
#include "cli/UserDocument.h"
#include "workflow/PlannedChange.h"
#include "workflow/RuleEdits.h"

#include <CLI/CLI.hpp>

namespace quorvane::cli {

void ChangeOptions::addTo(CLI::App& command)
{
    command.add_flag("--dry-run", m_isDryRun, "Print what would be changed, and write nothing");
    command.add_flag("--json", m_asJson, "One JSON object for each rule, then one with the numbers");
}

std::unique_ptr<UserDocument> ChangeOptions::open(const CommandContext& context) const
{
    return m_isDryRun ? openToLook(context) : openForWriting(context);
}

int ChangeOptions::carryOut(UserDocument& user, const workflow::PlannedChange& plan, const std::string& verb,
    const workflow::RowsOfRules& rows) const
{
    for (const std::string& remark : plan.remarks)
        printError(printable(remark));
    if (plan.refusal) {
        printError("nothing was changed: " + printable(*plan.refusal));
        return ExitStatus::failure;
    }
    const bool isWritten = !m_isDryRun && !plan.change.isEmpty();
    if (isWritten) {
        const std::size_t rules = plan.difference.changed.size() + plan.difference.removed.size();
        user.document().perform(
            plan.change, {.action = workflow::actionName(verb, rules), .refusesCuts = true});
    }
    if (!user.isWritten())
        return ExitStatus::failure;
    Output output;
    writeDifference(output, plan.difference, m_asJson, rows);
    writeOutcome(output, plan.difference, {plan.unchanged, isWritten}, m_asJson);
    return output.finish(isWritten) ? ExitStatus::success : ExitStatus::failure;
}

} // namespace quorvane::cli
