#include "windows/KeptSelection.h"

#include "windows/RuleCellsModel.h"

#include <QItemSelectionModel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <functional>
#include <utility>

namespace quorvane {

namespace {

void selectRows(QItemSelection& selection, const RuleCellsModel& model, int first, int last)
{
    selection.select(model.index(first, 0), model.index(last, model.columnCount() - 1));
}

} // namespace

KeptSelection::KeptSelection(const QTableView& table, const RuleCellsModel& model)
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

void KeptSelection::restore(QTableView& table, const RuleCellsModel& model) const
{
    QItemSelection selection;
    QModelIndex current;
    int topmostRow = m_topmostRow;
    int firstSelected = -1;
    for (int row = 0; row < model.rowCount(); ++row) {
        const void* rule = addressOf(model.ruleAt(row));
        const bool selected = std::binary_search(m_selected.begin(), m_selected.end(), rule, std::less<>());
        if (selected && firstSelected < 0)
            firstSelected = row;
        if (!selected && firstSelected >= 0)
            selectRows(selection, model, std::exchange(firstSelected, -1), row - 1);
        if (rule == m_current)
            current = model.index(row, 0);
        if (rule == m_topmost && m_topmostRow > 0) // a table at its top stays there
            topmostRow = row;
    }
    if (firstSelected >= 0)
        selectRows(selection, model, firstSelected, model.rowCount() - 1);
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

} // namespace quorvane
