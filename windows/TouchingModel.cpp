#include "windows/TouchingModel.h"

#include "rules/ListedRows.h"

namespace quorvane {

namespace {

bool listIsShaded = false; // of the rows of all such tables, for the whole process

}

TouchingModel::TouchingModel(const RuleManager& store, Workspace& workspace, QObject* parent)
    : RuleCellsModel(whyColumn + 1, listedRows({}), workspace, listIsShaded, parent)
    , m_store(store)
{
}

void TouchingModel::show(const std::vector<RuleRef>& rules, const TouchQuestion& question)
{
    m_question = question;
    setRows(listedRows(rules), true);
}

RuleCell TouchingModel::makeCell(std::size_t row, int column) const
{
    if (column < whyColumn)
        return ruleCell(m_store, rows(), row, true, static_cast<RuleColumn>(column), m_place);
    RuleCell cell;
    cell.text = whyTouches(valueOf(rows().at(row, true)), m_question);
    cell.toolTip = cell.text;
    return cell;
}

std::string_view TouchingModel::titleOf(int column) const
{
    return column < whyColumn ? columnTitle(static_cast<RuleColumn>(column)) : "Why";
}

} // namespace quorvane
