#pragma once

#include "rules/RuleManager.h"
#include "windows/RuleCellsModel.h"

namespace quorvane {

// The rows of a rule store as a Qt table. Keeps the rows it last showed until it is told to reload.
class RulesTableModel : public RuleCellsModel {
    Q_OBJECT
public:
    // Neither is owned.
    RulesTableModel(const RuleManager& store, Workspace& workspace, QObject* parent = nullptr);

    bool showsSystemRules() const { return m_showsSystemRules; }
    // Takes effect with the next reload.
    void setShowsSystemRules(bool shows) { m_showsSystemRules = shows; }

    // Takes the store's present rows.
    void reload();

protected:
    RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    const RuleManager& m_store;
    bool m_showsSystemRules = false;
};

} // namespace quorvane
