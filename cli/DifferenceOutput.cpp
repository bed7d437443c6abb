#include "cli/DifferenceOutput.h"

#include "cli/Output.h"
#include "cli/RuleJson.h"

#include <string>

namespace quorvane {

namespace {

Json changeJson(const char* change, const RuleValue& rule)
{
    Json object{{"change", change}};
    object.update(propertiesJson(rule));
    object["before"] = nullptr;
    return object;
}

// The properties of `before` that differ from those of `after`.
Json differingJson(const RuleValue& before, const RuleValue& after)
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

void writeJson(Output& output, const RulesDifference& difference)
{
    for (const RuleValue& rule : difference.added)
        output.write(jsonLine(changeJson("added", rule)));
    for (const RuleValue& rule : difference.removed)
        output.write(jsonLine(changeJson("removed", rule)));
    for (const auto& [before, after] : difference.changed) {
        Json object = changeJson("changed", after);
        object["before"] = differingJson(before, after);
        output.write(jsonLine(object));
    }
}

} // namespace

void writeDifference(Output& output, const RulesDifference& difference, bool asJson, const RowsOfRules& rows)
{
    if (asJson)
        return writeJson(output, difference);
    for (const std::string& text : differenceTexts(difference, rows))
        output.write(printable(text) + "\n");
}

void writeOutcome(
    Output& output, const RulesDifference& difference, const ChangeOutcome& outcome, bool asJson)
{
    if (asJson) {
        output.write(jsonLine({{"added", difference.added.size()}, {"removed", difference.removed.size()},
            {"changed", difference.changed.size()}, {"unchanged", outcome.unchanged},
            {"written", outcome.isWritten}}));
        return;
    }
    output.write(differenceSummary(difference) + (outcome.isWritten ? "\n" : "; nothing was written\n"));
}

} // namespace quorvane
