#pragma once

#include "cli/PlaceOptions.h"
#include "cli/SelectionOptions.h"
#include "workflow/DifferenceText.h"

#include <optional>
#include <vector>

namespace quorvane::cli {

// Rules that were chosen, in the order of their rows.
struct ChosenRules {
    std::vector<rules::RuleRef> rules;
    workflow::RowsOfRules rows;
};

// Which of the current user's rules a command is to change: the options of a selection, of which there must
// be one, or --all; and where programs and paths are looked up for it.
class UserSelection {
public:
    void addTo(CLI::App& command);

    // Throws CLI::ParseError for what makes no sense.
    void finish();

    std::optional<workflow::RulesPlace> openPlace() const { return m_place.open(); }
    const std::vector<workflow::FindingKind>& findings() const { return m_selection.criteria.findings; }

    // None, after a complaint, when a row is not there. Puts filter and sort order in force.
    std::optional<ChosenRules> choose(rules::RuleManager& store, const workflow::RulesPlace& place) const;
    // The rules chosen with these findings in place of those that were asked for.
    std::vector<rules::RuleRef> rulesWith(rules::RuleManager& store, const workflow::RulesPlace& place,
        std::vector<workflow::FindingKind> findings) const;

private:
    RuleSelection m_selection;
    SelectionOptions m_options;
    PlaceOptions m_place;
    bool m_isAll = false;
};

} // namespace quorvane::cli
