#include "cli/SelectionOptions.h"

#include "cli/FindingOptions.h"
#include "cli/Output.h"
#include "rules/RuleCodes.h"

#include <charconv>
#include <string_view>
#include <system_error>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

rules::SortDescriptor sortDescriptor(const std::string& spelled)
{
    constexpr std::string_view descending = ":desc";
    const bool isDescending = spelled.ends_with(descending);
    const std::string name = spelled.substr(0, spelled.size() - (isDescending ? descending.size() : 0));
    const auto key = rules::sortKeyNamed(name);
    if (!key)
        throw CLI::ValidationError("--sort", "'" + name + "' is not a property of the rules");
    return {*key, !isDescending};
}

std::int32_t ruleClass(const std::string& text)
{
    return text == rules::policyClassDescription(rules::PolicyClass::watch)
        ? rules::PolicyClass::watch
        : rules::policyClassForString(text);
}

std::string onlyRowNumber(const std::string& text)
{
    std::size_t row = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, row);
    return error == std::errc() && stop == end ? "" : "'" + text + "' is not the number of a row";
}

// An option that may be repeated, with one value each time.
template <class Value>
CLI::Option* addChoice(
    CLI::App& command, const char* name, std::vector<Value>& values, const char* help, const char* type)
{
    return command.add_option(name, values, help)->type_name(type)->take_all()->allow_extra_args(false);
}

} // namespace

void addFileOption(CLI::App& command, RuleSelection& selection)
{
    command.add_option_function<std::string>(
        "FILE", [&selection](const std::string& file) { selection.file = file; },
        "A rules file to use instead of the current user's configuration");
}

void SelectionOptions::addTo(CLI::App& command, RuleSelection& selection)
{
    command.add_flag("--system", selection.includeSystemRules, "Include system rules");
    addUserRowsTo(command, selection);
}

void SelectionOptions::addUserRowsTo(CLI::App& command, RuleSelection& selection)
{
    workflow::RuleCriteria& criteria = selection.criteria;
    command.add_option("--filter", selection.filter, "Only rules that contain this text");
    command.add_option("--sort", m_sort, "Sort by KEY or KEY:desc; the first one given is the primary key")
        ->type_name("KEY[:desc]")
        ->take_all()
        ->allow_extra_args(false);
    addChoice(command, "--class", m_classes, "Only allow, deny or watch rules", "CLASS")
        ->check(CLI::IsMember({"allow", "deny", "watch"}));
    addChoice(command, "--type", m_types, "Only prefix, path or suffix rules", "TYPE")
        ->check(CLI::IsMember({"prefix", "path", "suffix"}));
    addChoice(command, "--tag", criteria.tags, "Only rules with this tag; \"\" for those without", "TAG");
    addChoice(command, "--process", criteria.processes, "Only rules of this whole process string", "PROCESS");
    addChoice(
        command, "--program", criteria.programs, "Only rules of this program, whatever its parent", "PATH");
    addChoice(command, "--path", criteria.paths, "Only rules about this very path", "PATH");
    addChoice(command, "--finding", m_findings, "Only rules of which check finds this", "KIND");
    addChoice(command, "--row", criteria.rows, "Only this row; may be given several times", "N")
        ->check(onlyRowNumber);
}

void SelectionOptions::finish(RuleSelection& selection, bool isNowhere) const
{
    for (const std::string& spelled : m_sort)
        selection.sort.push_back(sortDescriptor(spelled));
    for (const std::string& spelled : m_classes)
        selection.criteria.classes.push_back(ruleClass(spelled));
    for (const std::string& spelled : m_types)
        selection.criteria.types.push_back(rules::policyTypeForString(spelled));
    for (const std::string& spelled : m_findings)
        selection.criteria.findings.push_back(findableKindGiven("--finding", spelled, isNowhere));
}

std::optional<std::vector<std::size_t>> chosenRows(
    const rules::RuleManager& store, const RuleSelection& selection, const workflow::RulesPlace& place)
{
    const bool includeSystemRules = selection.includeSystemRules;
    if (const auto row = missingRow(store, includeSystemRules, selection.criteria)) {
        printError("there is no row " + std::to_string(*row) + ", there are "
            + std::to_string(store.totalRules(includeSystemRules)) + " rows; nothing was done");
        return std::nullopt;
    }
    return rowsMeeting(store, includeSystemRules, selection.criteria, place);
}

std::vector<rules::RuleRef> rulesOf(
    const rules::RuleManager& store, const std::vector<std::size_t>& rows, bool includeSystemRules)
{
    std::vector<rules::RuleRef> rules;
    rules.reserve(rows.size());
    for (const std::size_t row : rows)
        rules.push_back(store.ruleAtIndex(row, includeSystemRules));
    return rules;
}

} // namespace quorvane::cli
