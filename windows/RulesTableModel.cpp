#include "windows/RulesTableModel.h"

namespace quorvane {

namespace {

bool shaded = false; // of the main table's rows, for the whole process

} // namespace

RulesTableModel::RulesTableModel(const RuleManager& store, Workspace& workspace, QObject* parent)
    : RuleCellsModel(ruleColumnCount, store.rows(), workspace, shaded, parent)
    , m_store(store)
{
}

void RulesTableModel::reload()
{
    setRows(m_store.rows(), m_showsSystemRules);
}

RuleCell RulesTableModel::makeCell(std::size_t row, int column) const
{
    return ruleCell(m_store, rows(), row, rowsShowSystemRules(), static_cast<RuleColumn>(column));
}

std::string_view RulesTableModel::titleOf(int column) const
{
    return columnTitle(static_cast<RuleColumn>(column));
}

} // namespace quorvane
