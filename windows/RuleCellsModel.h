#pragma once

#include "desktop/Workspace.h"
#include "rules/RuleIndex.h"
#include "workflow/VisibleRows.h"

#include <QAbstractTableModel>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::windows {

// Rows of rules as a Qt table: what the main table and the review of an import have in common. Column 0 is
// the application.
//
// Keeps the rows it last showed until it is given others, so that Qt sees no row change behind its back.
// Cells of rows in view are made once; any other cell is made when it is asked for.
class RuleCellsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // Which column is the primary one of the present order; none when `column` is negative. Told in words
    // only: the header draws its own mark.
    void setSortedColumn(int column, Qt::SortOrder order);

    // The view shows the rows from `first` up to, not including, `end`.
    void setShownRows(int first, int end);

    // Makes cells of a row afresh when it is in view.
    void remakeCells(std::size_t row, std::initializer_list<int> columns);

    const rules::RuleRef& ruleAt(int row) const;
    // The rows of the rules for which `isWanted` is true, ascending.
    template <class IsWanted> std::vector<std::size_t> rowsWhere(IsWanted isWanted) const
    {
        return m_rows->rowsWhere(m_rowsShowSystemRules, isWanted);
    }
    // The row of that very rule; none when it is not shown.
    std::optional<int> rowOf(const rules::RuleRef& rule) const;
    // The rows of those very rules that are shown, ascending. One walk, however many they are.
    std::vector<std::size_t> rowsOf(const std::vector<rules::RuleRef>& rules) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

protected:
    // Neither `workspace` nor `shaded`, the band flag of VisibleRows, is owned.
    RuleCellsModel(int columns, std::shared_ptr<const rules::RuleRows> rows, desktop::Workspace& workspace,
        bool& shaded, QObject* parent);

    // Shows these rows from now on.
    void setRows(std::shared_ptr<const rules::RuleRows> rows, bool includeSystemRules);
    // Shows `rows` when they are the present ones less one run of them; all others keep their cells. False,
    // and nothing has changed, when that is not so; then setRows() is due.
    bool removeRun(std::shared_ptr<const rules::RuleRows> rows);
    // Shows `text` in a cell until the next setRows().
    void setShownText(const QModelIndex& index, const QString& text);
    const rules::RuleRows& rows() const { return *m_rows; }
    const std::shared_ptr<const rules::RuleRows>& sharedRows() const { return m_rows; }
    bool rowsShowSystemRules() const { return m_rowsShowSystemRules; }

    virtual workflow::RuleCell makeCell(std::size_t row, int column) const = 0;
    virtual std::string_view titleOf(int column) const = 0;

private:
    QVariant decoration(const workflow::RuleCell& cell) const;
    std::optional<std::size_t> startOfRun(const rules::RuleRows& rows) const;

    desktop::Workspace& m_workspace;
    const int m_columns;
    std::shared_ptr<const rules::RuleRows> m_rows;
    bool m_rowsShowSystemRules = false; // as m_rows was taken
    int m_sortedColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    workflow::VisibleRows m_shownRows;
};

} // namespace quorvane::windows
