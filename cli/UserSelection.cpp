#include "cli/UserSelection.h"

#include <utility>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

void UserSelection::addTo(CLI::App& command)
{
    m_options.addUserRowsTo(command, m_selection);
    command.add_flag("--all", m_isAll, "Every rule of the user; stands alone");
    m_place.addTo(command);
}

void UserSelection::finish()
{
    m_options.finish(m_selection, m_place.isNowhere());
    const bool isSelection = !m_selection.criteria.isEmpty() || !m_selection.filter.empty();
    if (!isSelection && !m_isAll)
        throw CLI::RequiredError("a selection or --all");
    if (isSelection && m_isAll)
        throw CLI::ValidationError("--all", "stands alone");
}

std::optional<ChosenRules> UserSelection::choose(
    rules::RuleManager& store, const workflow::RulesPlace& place) const
{
    store.applyFilterWithString(m_selection.filter);
    store.sortIndexUsingDescriptors(m_selection.sort);
    const auto rows = chosenRows(store, m_selection, place);
    if (!rows)
        return std::nullopt;
    ChosenRules chosen{rulesOf(store, *rows, false), {}};
    for (std::size_t number = 0; number < rows->size(); ++number)
        chosen.rows.add(valueOf(chosen.rules[number]), (*rows)[number]);
    return chosen;
}

std::vector<rules::RuleRef> UserSelection::rulesWith(rules::RuleManager& store,
    const workflow::RulesPlace& place, std::vector<workflow::FindingKind> findings) const
{
    workflow::RuleCriteria criteria = m_selection.criteria;
    criteria.findings = std::move(findings);
    return rulesOf(store, rowsMeeting(store, false, criteria, place), false);
}

} // namespace quorvane::cli
