#include "cli/Commands.h"
#include "cli/DifferenceOutput.h"
#include "cli/JsonText.h"
#include "cli/Output.h"
#include "cli/PlaceOptions.h"
#include "cli/RuleSelection.h"
#include "cli/UnwritableWarning.h"
#include "cli/UserDocument.h"
#include "workflow/RuleImport.h"

#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

// Imports all rules; returns how many of the added ones will not read back.
std::size_t importRules(
    const rules::RuleManager& exchange, workflow::RuleImport& import, rules::LineEnds lineEnds)
{
    std::size_t unwritable = 0;
    const std::size_t total = exchange.totalRules(false);
    for (std::size_t row = 0; row < total; ++row) {
        const std::int32_t before = import.addedRules();
        const rules::RuleRef rule = import.importRule(exchange.ruleAtIndex(row, false));
        unwritable += import.addedRules() > before && !readsBack(rule, lineEnds) ? 1U : 0U;
    }
    return unwritable;
}

std::string answer(const workflow::RuleImport& import, const workflow::ImportResult& result, bool asJson)
{
    if (!asJson)
        return result.hasImported ? result.notice.message + "\n" : std::string();
    return Json{{"imported", import.importedRules()}, {"added", import.addedRules()}}.dump() + "\n";
}

class ImportCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "import", "Add the rules of an exchange file to the current user's configuration");
        command.footer(
            "Rules without a tag get the file's name as their tag; rules without a constraint are bound "
            "to their program.\n--json prints one object: \"imported\", the rules of the file, and "
            "\"added\", those that were not there yet;\nwith --dry-run one object for each rule that would "
            "be added, and one with the numbers.\nThe pending suggestions of the fail-safe file are dropped, "
            "as after every import.");
        command.add_option("FILE", m_file, "An exchange file")->required();
        m_place.addTo(command);
        command.add_flag("--dry-run", m_isDryRun, "Print what would be added, and write nothing");
        command.add_flag("--json", m_asJson, "Numbers as JSON, see below");
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto place = m_place.open();
        if (!place)
            return ExitStatus::failed;
        const auto user = m_isDryRun ? openToLook(context) : openForWriting(context);
        if (!user)
            return ExitStatus::failed;
        const OpenedStore exchange = openStore({.file = m_file}, context);
        if (!exchange.isComplete) {
            printError("nothing was imported");
            return ExitStatus::failed;
        }
        workflow::RuleImport import(user->document(), *place);
        import.begin(m_file);
        const std::size_t unwritable = importRules(exchange.store, import, user->lineEnds());
        warnOfUnwritableRules(unwritable, "added");
        user->expectUnwritableRules(unwritable);
        return m_isDryRun ? show(import) : finish(import);
    }

private:
    // Prints what the import would add. Returns the exit status.
    int show(const workflow::RuleImport& import) const
    {
        rules::RulesDifference difference;
        for (const rules::ChangeSet::Addition& addition : import.pendingChange().added)
            difference.added.push_back(addition.value);
        Output output;
        writeDifference(output, difference, m_asJson);
        const auto present = static_cast<std::size_t>(import.importedRules() - import.addedRules());
        writeOutcome(output, difference, {.unchanged = present}, m_asJson);
        return output.finish() ? ExitStatus::success : ExitStatus::failed;
    }

    int finish(workflow::RuleImport& import) const
    {
        const workflow::ImportResult result = import.didFinishImportingRules();
        if (result.writeFailure) {
            printError(*result.writeFailure);
            return ExitStatus::failed;
        }
        Output output;
        output.write(answer(import, result, m_asJson));
        if (!result.hasImported)
            printError(result.notice.message);
        return output.finish(true) && result.hasImported ? ExitStatus::success : ExitStatus::failed;
    }

    PlaceOptions m_place;
    std::string m_file;
    bool m_isDryRun = false;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeImportCommand()
{
    return std::make_unique<ImportCommand>();
}

} // namespace quorvane::cli
