#pragma once

#include "cli/PlaceOptions.h"
#include "cli/SelectionOptions.h"
#include "workflow/DifferenceText.h"

#include <optional>
#include <vector>

namespace quorvane::cli {

// The chosen rules, in row order.
struct ChosenRules {
    std::vector<rules::RuleRef> rules;
    workflow::RowsOfRules rows;
};

// Which of the current user's rules a command changes: the options of a selection, at least one of which is
// required, or --all; and where programs and paths are looked up for it.
class UserSelection {
public:
    void addTo(CLI::App& command);

    // Throws CLI::ParseError for an invalid combination.
    void finish();

    std::optional<workflow::RulesPlace> openPlace() const { return m_place.open(); }
    const std::vector<workflow::FindingKind>& findings() const { return m_selection.criteria.findings; }

    // None, with an error printed, when a row does not exist. Applies filter and sort order to the store.
    std::optional<ChosenRules> choose(rules::RuleManager& store, const workflow::RulesPlace& place) const;
    // The rules that the selection would choose with these findings instead of those given.
    std::vector<rules::RuleRef> rulesWith(rules::RuleManager& store, const workflow::RulesPlace& place,
        std::vector<workflow::FindingKind> findings) const;

private:
    RuleSelection m_selection;
    SelectionOptions m_options;
    PlaceOptions m_place;
    bool m_isAll = false;
};

} // namespace quorvane::cli
