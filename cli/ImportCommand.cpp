#include "cli/Commands.h"
#include "cli/JsonText.h"
#include "cli/Output.h"
#include "cli/RuleSelection.h"
#include "rules/RuleLine.h"
#include "workflow/RuleImport.h"

#include <string>

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

// Hands over all rules; answers how many of those that were added will not read back.
std::size_t importRules(const RuleManager& exchange, RuleImport& import)
{
    std::size_t unwritable = 0;
    const std::size_t total = exchange.totalRules(false);
    for (std::size_t row = 0; row < total; ++row) {
        const std::int32_t before = import.addedRules();
        const RuleRef rule = import.importRule(exchange.ruleAtIndex(row, false));
        const bool readsBack
            = askRule(rule, [](const auto& record) { return readsBackAsWritten(record.fields()); });
        unwritable += import.addedRules() > before && !readsBack ? 1U : 0U;
    }
    return unwritable;
}

std::string answer(const RuleImport& import, const ImportResult& result, bool asJson)
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
            "\"added\", those that were not there yet.\nThe pending suggestions of the fail-safe file "
            "are dropped, as after every import.");
        command.add_option("FILE", m_file, "An exchange file")->required();
        command.add_flag("--json", m_asJson, "Print a JSON object");
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto user = openForWriting(context.locations, context.log);
        if (!user)
            return 1;
        const OpenedStore exchange = openStore({.file = m_file}, context.locations, context.log);
        if (!exchange.isComplete) {
            complain("nothing was imported");
            return 1;
        }
        RuleImport import(user->document);
        import.begin(m_file);
        const std::size_t unwritable = importRules(*exchange.store, import);
        const ImportResult result = import.didFinishImportingRules();
        if (result.writeFailure) {
            complain(*result.writeFailure);
            return 1;
        }
        if (unwritable > 0)
            complain("warning: " + std::to_string(unwritable)
                + " of the rules added do not read back as written: they hold text other than ASCII, a "
                  "double quote, a blank at the end of a field, or no operations");
        Output output;
        output.write(answer(import, result, m_asJson));
        if (!result.hasImported)
            complain(result.notice.message);
        return output.finish() && result.hasImported ? 0 : 1;
    }

private:
    std::string m_file;
    bool m_asJson = false;
};

} // namespace

std::unique_ptr<Command> makeImportCommand()
{
    return std::make_unique<ImportCommand>();
}

} // namespace quorvane
