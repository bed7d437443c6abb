#include "cli/Commands.h"
#include "cli/Output.h"
#include "rules/RuleLine.h"
#include "workflow/RuleImport.h"

#include <nlohmann/json.hpp>

namespace quorvane {

namespace {

using Json = nlohmann::ordered_json;

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

} // namespace

int importCommand(const CommandContext& context, const std::string& file, bool asJson)
{
    const auto user = openForWriting(context.locations, context.log);
    if (!user)
        return 1;
    const OpenedStore exchange = openStore({.file = file}, context.locations, context.log);
    if (!exchange.isComplete) {
        complain("nothing was imported");
        return 1;
    }
    RuleImport import(user->document);
    import.begin(file);
    const std::size_t unwritable = importRules(*exchange.store, import);
    const ImportResult result = import.didFinishImportingRules();
    if (result.writeFailure) {
        complain(*result.writeFailure);
        return 1;
    }
    if (unwritable > 0)
        complain("warning: " + std::to_string(unwritable)
            + " of the rules added do not read back as written: they hold text other than ASCII, a double "
              "quote, a blank at the end of a field, or no operations");
    Output output;
    output.write(answer(import, result, asJson));
    if (!result.hasImported)
        complain(result.notice.message);
    return output.finish() && result.hasImported ? 0 : 1;
}

} // namespace quorvane
