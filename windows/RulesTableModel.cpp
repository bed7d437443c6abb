#include "windows/RulesTableModel.h"

#include <utility>

namespace quorvane::windows {

namespace {

bool tableIsShaded = false; // shared by all main tables of the process

} // namespace

RulesTableModel::RulesTableModel(
    const rules::RuleManager& store, desktop::Workspace& workspace, QObject* parent)
    : RuleCellsModel(workflow::ruleColumnCount, store.rows(), workspace, tableIsShaded, parent)
    , m_store(store)
{
}

void RulesTableModel::reload()
{
    setRows(presentRows(), m_showsSystemRules);
}

std::shared_ptr<const rules::RuleRows> RulesTableModel::presentRows()
{
    const auto all = m_store.rows();
    auto rows = m_narrowing ? m_narrowing->narrowed(*all) : all;
    m_leftOutRules = all->count(true) - rows->count(true);
    return rows;
}

std::size_t RulesTableModel::hiddenSystemRules() const
{
    return rows().count(true) - rows().count(rowsShowSystemRules());
}

bool RulesTableModel::removeRules()
{
    return removeRun(presentRows());
}

workflow::RulesSelection RulesTableModel::selectionOf(
    std::vector<workflow::RulesSelection::Range> ranges) const
{
    return {sharedRows(), rowsShowSystemRules(), std::move(ranges)};
}

Qt::ItemFlags RulesTableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = RuleCellsModel::flags(index);
    return static_cast<workflow::RuleColumn>(index.column()) == workflow::RuleColumn::tag
        ? flags | Qt::ItemIsEditable
        : flags;
}

bool RulesTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole
        || static_cast<workflow::RuleColumn>(index.column()) != workflow::RuleColumn::tag)
        return false;
    setShownText(index, value.toString());
    Q_EMIT tagTyped(value.toString());
    return true;
}

workflow::RuleCell RulesTableModel::makeCell(std::size_t row, int column) const
{
    return ruleCell(
        m_store, rows(), row, rowsShowSystemRules(), static_cast<workflow::RuleColumn>(column), m_place);
}

std::string_view RulesTableModel::titleOf(int column) const
{
    return columnTitle(static_cast<workflow::RuleColumn>(column));
}

} // namespace quorvane::windows
