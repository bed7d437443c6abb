#pragma once

#include "rules/RuleManager.h"
#include "windows/RuleCellsModel.h"
#include "workflow/RuleCells.h"
#include "workflow/TouchingRules.h"

#include <vector>

namespace quorvane::windows {

// Rules that apply to a path, in the columns of the rules table, and why they do. User interface thread only.
class TouchingModel : public RuleCellsModel {
    Q_OBJECT
public:
    static constexpr int whyColumn = workflow::ruleColumnCount; // after those of the rules table

    // Neither is owned.
    TouchingModel(const rules::RuleManager& store, desktop::Workspace& workspace, QObject* parent = nullptr);

    // Sets where programs and paths are looked up. Takes effect with the next rules.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Shows stored rules, the results for `question`.
    void show(const std::vector<rules::RuleRef>& rules, const workflow::TouchQuestion& question);

protected:
    workflow::RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    const rules::RuleManager& m_store;
    workflow::TouchQuestion m_question;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
};

} // namespace quorvane::windows
