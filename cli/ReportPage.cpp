#include "cli/ReportPage.h"

#include "cli/Output.h"
#include "rules/RuleCodes.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace quorvane::cli {

namespace {

constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<title>)";

constexpr std::string_view style = R"(</title>
<style>
:root { color-scheme: light dark; }
body { font: 1rem/1.45 system-ui, sans-serif; margin: 2rem auto; max-width: 75rem; padding: 0 1rem; }
h1 { font-size: 1.6rem; } h2 { font-size: 1.25rem; margin-top: 2.5rem; }
table { border-collapse: collapse; width: 100%; }
caption { text-align: left; padding: .3rem 0; }
th, td { border-bottom: 1px solid; padding: .25rem .6rem; text-align: left; vertical-align: top; }
td.number { text-align: right; font-variant-numeric: tabular-nums; }
.text { overflow-wrap: anywhere; }
.bar { display: inline-block; height: .7em; border: 1px solid; box-sizing: border-box; vertical-align: baseline;
    print-color-adjust: exact; -webkit-print-color-adjust: exact; }
.allow { background: transparent; }
.deny { background: currentColor; }
.watch { background: repeating-linear-gradient(45deg, currentColor 0 2px, transparent 2px 5px); }
nav a { margin-right: 1rem; }
@media print { body { margin: 0; max-width: none; } nav { display: none; } thead { display: table-header-group; }
    tr { break-inside: avoid; } }
</style>
</head>
<body>
)";

// Escapes `text` for display: no markup, no control characters, no effect on the direction of the following
// text.
std::string shown(std::string_view text)
{
    std::string answer;
    for (const char c : printable(text)) {
        switch (c) {
        case '&':
            answer += "&amp;";
            break;
        case '<':
            answer += "&lt;";
            break;
        case '>':
            answer += "&gt;";
            break;
        case '"':
            answer += "&quot;";
            break;
        case '\'':
            answer += "&#39;";
            break;
        default:
            answer += c;
        }
    }
    return answer;
}

std::string isolated(std::string_view text)
{
    return "<bdi>" + shown(text) + "</bdi>";
}

std::string cell(std::string_view text)
{
    return "<td class=\"text\">" + isolated(text) + "</td>";
}

std::string numberCell(std::size_t number)
{
    return "<td class=\"number\">" + std::to_string(number) + "</td>";
}

std::string tableHead(std::string_view caption, std::initializer_list<std::string_view> titles)
{
    std::string text = "<table>\n<caption>" + shown(caption) + "</caption>\n<thead><tr>";
    for (const std::string_view title : titles)
        text.append("<th scope=\"col\">").append(title).append("</th>");
    return text + "</tr></thead>\n<tbody>\n";
}

constexpr std::string_view tableEnd = "</tbody>\n</table>\n";

std::string nameOf(const workflow::MappedFolder& folder)
{
    switch (folder.kind) {
    case workflow::MappedFolder::Kind::everyPath:
        return "every path";
    case workflow::MappedFolder::Kind::byEnding:
        return "paths by their ending";
    case workflow::MappedFolder::Kind::folder:
    case workflow::MappedFolder::Kind::other:
        break;
    }
    return folder.path;
}

std::string bar(std::string_view kind, std::size_t count, std::size_t most)
{
    constexpr std::size_t widest = 100; // tenths of an em
    if (count == 0)
        return {};
    const std::size_t width = std::max<std::size_t>(count * widest / most, 2);
    return "<span class=\"bar " + std::string(kind) + "\" aria-hidden=\"true\" style=\"width:"
        + std::to_string(width / 10) + "." + std::to_string(width % 10) + "em\"></span>";
}

std::string programsOf(const workflow::MappedFolder& folder)
{
    std::string text;
    for (const auto& [program, rules] : folder.programs)
        text.append(text.empty() ? "" : "<br>")
            .append(isolated(program))
            .append(rules == 1 ? "" : " (" + std::to_string(rules) + ")");
    return "<td class=\"text\">" + text + "</td>";
}

std::string mapTable(const std::vector<workflow::MappedFolder>& folders)
{
    std::size_t most = 1;
    for (const workflow::MappedFolder& folder : folders)
        most = std::max(most, folder.counts.allow + folder.counts.deny + folder.counts.watch);
    std::string text
        = tableHead("The folders that rules speak of. Bars: empty allows, full denies, hatched watches.",
            {"Folder", "Allow", "Deny", "Watch", "Share", "Programs"});
    for (const workflow::MappedFolder& folder : folders) {
        const workflow::AccessCounts& counts = folder.counts;
        const std::size_t indent = std::min<std::size_t>(folder.depth, 12);
        text += "<tr><th scope=\"row\" class=\"text\" style=\"padding-left:" + std::to_string(indent + 1)
            + "em\">" + isolated(nameOf(folder)) + "</th>" + numberCell(counts.allow)
            + numberCell(counts.deny) + numberCell(counts.watch) + "<td>" + bar("allow", counts.allow, most)
            + bar("deny", counts.deny, most) + bar("watch", counts.watch, most) + "</td>" + programsOf(folder)
            + "</tr>\n";
    }
    return text.append(tableEnd);
}

std::string problemsTables(const std::vector<workflow::FileFinding>& findings)
{
    std::string text;
    for (const workflow::FindingKind kind : workflow::allFindingKinds) {
        std::string rows;
        std::size_t number = 0;
        for (const workflow::FileFinding& finding : findings) {
            if (finding.kind != kind)
                continue;
            ++number;
            const std::string place = finding.row ? "row " + std::to_string(*finding.row)
                                                  : "line " + std::to_string(finding.line);
            rows += "<tr><td>" + place + "</td>" + cell(finding.rule) + cell(finding.text) + "</tr>\n";
        }
        if (number > 0)
            text += tableHead(std::string(findingName(kind)) + ": " + std::to_string(number) + ". "
                            + std::string(findingKindText(kind)),
                        {"Where", "Rule", "Finding"})
                + rows + std::string(tableEnd);
    }
    return text.empty() ? "<p>None was found.</p>\n" : text;
}

template <class Rule> std::string ruleRow(std::size_t row, const Rule& rule)
{
    const auto& fields = rule.fields();
    std::string constraint;
    std::string_view policyClass = rules::policyClassDescription(rules::PolicyClass::watch);
    if constexpr (requires { fields.constraint; }) {
        constraint = fields.constraint.view();
        policyClass = rules::policyClassDescription(fields.policyClass);
    }
    return "<tr>" + numberCell(row) + cell(policyClass)
        + cell(rules::policyTypeDescription(fields.policyType)) + cell(fields.path.view())
        + cell(operationsForRule(rule)) + cell(fields.processName.view()) + cell(constraint)
        + cell(fields.tag.view()) + "</tr>\n";
}

std::string rulesTable(const std::vector<rules::RuleRef>& rules)
{
    std::string text = tableHead("Operations: r read, w write, c create, m mount, x execute.",
        {"Row", "Class", "Type", "Path", "Operations", "Program", "Constraint", "Tag"});
    for (std::size_t row = 0; row < rules.size(); ++row)
        text += visitRule(rules[row], [row](const auto& rule) { return ruleRow(row, rule); });
    return text.append(tableEnd);
}

std::string counted(std::size_t count, const char* noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace

std::string reportPage(const ReportFacts& facts)
{
    const std::string title = "Rules of " + shown(facts.subject);
    std::string page(head);
    page.append(title).append(style);
    page += "<header>\n<h1>Rules of " + isolated(facts.subject) + "</h1>\n<p>"
        + counted(facts.rules.size(), "rule") + ", " + counted(facts.findings.size(), "problem") + ". "
        + isolated(facts.lookedUp)
        + "</p>\n<nav aria-label=\"Parts of this page\"><a href=\"#map\">Map</a><a "
          "href=\"#problems\">Problems</a>"
          "<a href=\"#rules\">Rules</a></nav>\n</header>\n<main>\n";
    page += "<section id=\"map\" aria-labelledby=\"map-title\">\n<h2 id=\"map-title\">Map</h2>\n"
        + mapTable(workflow::accessMap(facts.rules)) + "</section>\n";
    page += "<section id=\"problems\" aria-labelledby=\"problems-title\">\n<h2 "
            "id=\"problems-title\">Problems</h2>\n"
        + problemsTables(facts.findings) + "</section>\n";
    page += "<section id=\"rules\" aria-labelledby=\"rules-title\">\n<h2 id=\"rules-title\">Rules</h2>\n"
        + rulesTable(facts.rules) + "</section>\n</main>\n</body>\n</html>\n";
    return page;
}

} // namespace quorvane::cli
