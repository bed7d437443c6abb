#include "cli/Commands.h"
#include "cli/Output.h"
#include "workflow/RuleFindings.h"

#include <nlohmann/json.hpp>

namespace quorvane {

namespace {

using Json = nlohmann::ordered_json;

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

} // namespace

int checkCommand(const CommandContext& context, const RuleSelection& selection, bool asJson)
{
    const OpenedStore opened = openStore(selection, context.locations, context.log);
    const RuleManager& store = *opened.store;
    Output output;
    bool anyFinding = false;
    for (std::size_t row = 0; row < store.totalRules(false); ++row) {
        const RuleRef& rule = store.ruleAtIndex(row, false);
        for (const RuleFinding& finding : findingsForRule(store, rule)) {
            anyFinding = true;
            output.write(asJson ? jsonLine(row, rule, finding) : textLines(row, rule, finding));
        }
    }
    // A check of rules that could not be read must not look like a passed one.
    const bool passed = opened.isComplete && !opened.hasFailed && !anyFinding;
    return output.finish() && passed ? 0 : 1;
}

} // namespace quorvane
