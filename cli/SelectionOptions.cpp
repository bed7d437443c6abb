#include "cli/SelectionOptions.h"

#include <string_view>

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

SortDescriptor sortDescriptor(const std::string& spelled)
{
    constexpr std::string_view descending = ":desc";
    const bool isDescending = spelled.ends_with(descending);
    const std::string name = spelled.substr(0, spelled.size() - (isDescending ? descending.size() : 0));
    const auto key = sortKeyNamed(name);
    if (!key)
        throw CLI::ValidationError("--sort", "'" + name + "' is not a property of the rules");
    return {*key, !isDescending};
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
    command.add_option("--filter", selection.filter, "Only rules that contain this text");
    command.add_option("--sort", m_sort, "Sort by KEY or KEY:desc; the first one given is the primary key")
        ->type_name("KEY[:desc]")
        ->take_all()
        ->allow_extra_args(false);
}

void SelectionOptions::finish(RuleSelection& selection) const
{
    for (const std::string& spelled : m_sort)
        selection.sort.push_back(sortDescriptor(spelled));
}

} // namespace quorvane
