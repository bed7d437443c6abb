#include "cli/DifferenceOutput.h"

#include "cli/Output.h"
#include "cli/RuleJson.h"

#include <string>

namespace quorvane::cli {

namespace {

Json changeJson(const char* change, const rules::RuleValue& rule)
{
    Json object{{"change", change}};
    object.update(propertiesJson(rule));
    object["before"] = nullptr;
    return object;
}

// The properties of `before` that differ from those of `after`.
Json differingJson(const rules::RuleValue& before, const rules::RuleValue& after)
{
    const Json now = propertiesJson(after);
    Json differing = Json::object();
    const Json old = propertiesJson(before);
    for (const auto& [name, value] : old.items()) {
        if (value != now.at(name))
            differing[name] = value;
    }
    return differing;
}

void writeJson(Output& output, const rules::RulesDifference& difference)
{
    for (const rules::RuleValue& rule : difference.added)
        output.write(jsonLine(changeJson("added", rule)));
    for (const rules::RuleValue& rule : difference.removed)
        output.write(jsonLine(changeJson("removed", rule)));
    for (const auto& [before, after] : difference.changed) {
        Json object = changeJson("changed", after);
        object["before"] = differingJson(before, after);
        output.write(jsonLine(object));
    }
}

} // namespace

void writeDifference(
    Output& output, const rules::RulesDifference& difference, bool asJson, const workflow::RowsOfRules& rows)
{
    if (asJson)
        return writeJson(output, difference);
    for (const std::string& text : differenceTexts(difference, rows))
        output.write(printable(text) + "\n");
}

void writeOutcome(
    Output& output, const rules::RulesDifference& difference, const ChangeOutcome& outcome, bool asJson)
{
    if (asJson) {
        output.write(jsonLine({{"added", difference.added.size()}, {"removed", difference.removed.size()},
            {"changed", difference.changed.size()}, {"unchanged", outcome.unchanged},
            {"written", outcome.isWritten}}));
        return;
    }
    output.write(
        workflow::differenceSummary(difference) + (outcome.isWritten ? "\n" : "; nothing was written\n"));
}

} // namespace quorvane::cli
