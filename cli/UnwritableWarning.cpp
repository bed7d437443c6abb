#include "cli/UnwritableWarning.h"

#include "cli/Output.h"

#include <string>

namespace quorvane::cli {

bool readsBack(const rules::RuleRef& rule, rules::LineEnds lineEnds)
{
    return visitRule(
        rule, [lineEnds](const auto& record) { return readsBackAsWritten(record.fields(), lineEnds); });
}

void warnOfUnwritableRules(std::size_t count, std::string_view done)
{
    if (count > 0)
        printError("warning: " + std::to_string(count) + " of the rules " + std::string(done)
            + (count == 1 ? " does" : " do")
            + " not read back as written: " + (count == 1 ? "it holds" : "they hold")
            + " text other than ASCII, a double quote, a blank at the end of a field, or no operations");
}

} // namespace quorvane::cli
