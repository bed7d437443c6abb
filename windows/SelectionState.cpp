#include "windows/SelectionState.h"

#include "windows/RuleCellsModel.h"

#include <QItemSelectionModel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace quorvane::windows {

namespace {

void selectRows(QItemSelection& selection, const RuleCellsModel& model, int first, int last)
{
    selection.select(model.index(first, 0), model.index(last, model.columnCount() - 1));
}

} // namespace

SelectionState::SelectionState(const QTableView& table, const RuleCellsModel& model)
    : m_topmostRow(std::max(table.rowAt(0), 0))
{
    for (const QItemSelectionRange& range : table.selectionModel()->selection()) {
        for (int row = range.top(), last = range.bottom(); row <= last; ++row)
            m_selected.push_back(addressOf(model.ruleAt(row)));
    }
    std::sort(m_selected.begin(), m_selected.end(), std::less<>());
    if (const QModelIndex current = table.currentIndex(); current.isValid())
        m_current = addressOf(model.ruleAt(current.row()));
    if (const auto* field = qobject_cast<QLineEdit*>(table.indexWidget(table.currentIndex())))
        m_typed = {table.currentIndex().column(), field->text(), field->cursorPosition()};
    if (m_topmostRow < model.rowCount())
        m_topmost = addressOf(model.ruleAt(m_topmostRow));
}

void SelectionState::restore(QTableView& table, const RuleCellsModel& model) const
{
    const auto isSelected = [this](const void* rule) {
        return std::binary_search(m_selected.begin(), m_selected.end(), rule, std::less<>());
    };
    const auto rows = model.rowsWhere([&](const rules::RuleRef& each) {
        const void* rule = addressOf(each);
        return rule == m_current || rule == m_topmost || isSelected(rule);
    });
    QItemSelection selection;
    QModelIndex current;
    int topmostRow = m_topmostRow;
    std::optional<int> firstSelected;
    for (std::size_t place = 0; place < rows.size(); ++place) {
        const int row = static_cast<int>(rows[place]);
        const void* rule = addressOf(model.ruleAt(row));
        const bool selected = isSelected(rule);
        if (selected && !firstSelected)
            firstSelected = row;
        const bool endsHere = place + 1 == rows.size() || rows[place + 1] != rows[place] + 1;
        if (firstSelected && (!selected || endsHere)) {
            selectRows(selection, model, *firstSelected, selected ? row : row - 1);
            firstSelected.reset();
        }
        if (rule == m_current)
            current = model.index(row, 0);
        if (rule == m_topmost && m_topmostRow > 0) // a table at its top stays there
            topmostRow = row;
    }
    table.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (current.isValid())
        table.selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    table.verticalScrollBar()->setValue(topmostRow);
    if (!m_typed || !current.isValid())
        return;
    const QModelIndex cell = current.siblingAtColumn(m_typed->column);
    table.edit(cell);
    if (auto* field = qobject_cast<QLineEdit*>(table.indexWidget(cell))) {
        field->setText(m_typed->text);
        field->setCursorPosition(m_typed->cursor);
    }
}

} // namespace quorvane::windows
