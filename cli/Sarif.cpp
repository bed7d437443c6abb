#include "cli/Sarif.h"

#include "cli/JsonText.h"

#include <string_view>

namespace quorvane::cli {

namespace {

// Replaces bytes that are not UTF-8, which a joined line can contain.
std::string written(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string_view levelOf(workflow::FindingKind kind)
{
    const bool isError = kind == workflow::FindingKind::doesNotReadBack
        || kind == workflow::FindingKind::joined || kind == workflow::FindingKind::invalidProgram;
    return isError ? "error" : "warning";
}

// How the user can fix it.
std::string_view helpFor(workflow::FindingKind kind)
{
    switch (kind) {
    case workflow::FindingKind::redundant:
        return "Remove the rule, or the wider one if that was not meant.";
    case workflow::FindingKind::invalidProgram:
        return "Give the rule the program's present path, or bind it to the program as it is now.";
    case workflow::FindingKind::missingPath:
        return "Correct the path, or remove the rule. Paths of another machine are looked up with --target.";
    case workflow::FindingKind::doesNotReadBack:
        return "Take out what the format cannot hold, or switch on whole lines.";
    case workflow::FindingKind::joined:
        return "Take the rules apart with \"quorvanectl rescue\".";
    case workflow::FindingKind::overlap:
        return "Make sure that the exception is meant; which rule wins is decided where they are enforced.";
    case workflow::FindingKind::unproven:
        return "Find out who signed the program before you trust it.";
    }
    return {};
}

Json described(workflow::FindingKind kind)
{
    const Json text{{"text", findingKindText(kind)}};
    return {{"id", findingName(kind)}, {"shortDescription", text}, {"fullDescription", text},
        {"help", {{"text", helpFor(kind)}}}, {"defaultConfiguration", {{"level", levelOf(kind)}}}};
}

Json locationsIn(const std::string& address, std::size_t line)
{
    Json place{{"artifactLocation", {{"uri", address}}}};
    if (line > 0)
        place["region"] = {{"startLine", line}};
    return Json::array({{{"physicalLocation", std::move(place)}}});
}

} // namespace

std::string fileAddress(const std::string& path)
{
    constexpr std::string_view unchanged
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string address = path.starts_with('/') ? "file://" : "";
    for (const char c : path) {
        if (unchanged.find(c) != std::string_view::npos) {
            address.push_back(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        address.append("%").append({digits[byte >> 4U], digits[byte & 0xFU]});
    }
    return address;
}

std::string sarifResult(const std::string& address, const workflow::FileFinding& finding)
{
    std::string text = finding.text;
    text.append("\n").append(finding.rule);
    return written({{"ruleId", findingName(finding.kind)},
        {"ruleIndex", static_cast<std::size_t>(finding.kind)}, {"level", levelOf(finding.kind)},
        {"message", {{"text", std::move(text)}}}, {"locations", locationsIn(address, finding.line)}});
}

std::string sarifNotification(const std::string& address, const std::string& message)
{
    return written(
        {{"level", "error"}, {"message", {{"text", message}}}, {"locations", locationsIn(address, 0)}});
}

std::string sarifBegin()
{
    Json rules = Json::array();
    for (const workflow::FindingKind kind : workflow::allFindingKinds)
        rules.push_back(described(kind));
    const Json driver{{"name", "quorvanectl"}, {"version", QUORVANE_VERSION}, {"rules", std::move(rules)}};
    return "{\"$schema\":\"https://json.schemastore.org/sarif-2.1.0.json\",\"version\":\"2.1.0\","
           "\"runs\":[{\"tool\":{\"driver\":"
        + written(driver) + "},\n\"results\":[";
}

std::string sarifEnd(const std::string& notifications)
{
    return std::string("],\n\"invocations\":[{\"executionSuccessful\":")
        + (notifications.empty() ? "true" : "false") + ",\"toolExecutionNotifications\":[" + notifications
        + "]}]}]}\n";
}

} // namespace quorvane::cli
