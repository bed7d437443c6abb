#include "windows/TouchingModel.h"

#include "rules/ListedRows.h"

namespace quorvane::windows {

namespace {

bool listIsShaded = false; // shared by all such tables of the process

}

TouchingModel::TouchingModel(const rules::RuleManager& store, desktop::Workspace& workspace, QObject* parent)
    : RuleCellsModel(whyColumn + 1, rules::listedRows({}), workspace, listIsShaded, parent)
    , m_store(store)
{
}

void TouchingModel::show(const std::vector<rules::RuleRef>& rules, const workflow::TouchQuestion& question)
{
    m_question = question;
    setRows(listedRows(rules), true);
}

workflow::RuleCell TouchingModel::makeCell(std::size_t row, int column) const
{
    if (column < whyColumn)
        return ruleCell(m_store, rows(), row, true, static_cast<workflow::RuleColumn>(column), m_place);
    workflow::RuleCell cell;
    cell.text = whyTouches(valueOf(rows().at(row, true)), m_question);
    cell.toolTip = cell.text;
    return cell;
}

std::string_view TouchingModel::titleOf(int column) const
{
    return column < whyColumn ? columnTitle(static_cast<workflow::RuleColumn>(column)) : "Why";
}

} // namespace quorvane::windows
