#pragma once

#include "rules/RuleManager.h"
#include "windows/RuleCellsModel.h"
#include "workflow/RuleCells.h"
#include "workflow/TouchingRules.h"

#include <vector>

namespace quorvane {

// Rules that touch a path, as the rules table shows them, and why they do.
class TouchingModel : public RuleCellsModel {
    Q_OBJECT
public:
    static constexpr int whyColumn = ruleColumnCount; // behind those of the rules table

    // Neither is owned.
    TouchingModel(const RuleManager& store, Workspace& workspace, QObject* parent = nullptr);

    // Where programs and paths are looked up. Takes effect with the next rules.
    void setPlace(const RulesPlace& place) { m_place = place; }

    // Stored rules, which `question` is about.
    void show(const std::vector<RuleRef>& rules, const TouchQuestion& question);

protected:
    RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    const RuleManager& m_store;
    TouchQuestion m_question;
    RulesPlace m_place = RulesPlace::thisMachine();
};

} // namespace quorvane
