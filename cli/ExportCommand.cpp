#include "cli/Commands.h"
#include "cli/Output.h"
#include "workflow/RulesExport.h"

namespace quorvane {

int exportCommand(const CommandContext& context, const RuleSelection& selection, const std::string& out,
    const std::vector<std::size_t>& rows)
{
    const OpenedStore opened = openStore(selection, context.locations, context.log);
    // An export of what could not be read would leave an empty file where a good one may have been.
    if (!opened.isComplete) {
        complain("nothing was written: not all rules could be read");
        return 1;
    }
    RuleManager& store = *opened.store;
    std::vector<RuleRef> rules;
    if (rows.empty()) {
        rules = store.userRules();
    } else {
        const std::size_t total = store.totalRules(selection.includeSystemRules);
        for (const std::size_t row : rows) {
            if (row >= total) {
                complain("nothing was written: there is no row " + std::to_string(row) + ", there are "
                    + std::to_string(total) + " rows");
                return 1;
            }
            rules.push_back(store.ruleAtIndex(row, selection.includeSystemRules));
        }
    }
    const WriteResult result = exportRules(out, rules);
    for (const std::string& warning : result.warnings)
        complain("warning: " + warning);
    if (!result.message)
        return opened.hasFailed ? 1 : 0;
    complain(*result.message);
    return 1;
}

} // namespace quorvane
