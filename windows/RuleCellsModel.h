#pragma once

#include "desktop/Workspace.h"
#include "rules/RuleRows.h"
#include "workflow/VisibleRows.h"

#include <QAbstractTableModel>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::windows {

// Rows of rules as a Qt table: the common base of the main table, the import review and similar lists. Column
// 0 is the application. User interface thread only.
//
// Keeps the rows it last showed until it gets others, so that rows never change without Qt being notified.
// Cells of rows in view are cached; any other cell is made on request.
class RuleCellsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // Sets the primary column of the current order; none when `column` is negative. Used for accessible texts
    // only: the header draws its own mark.
    void setSortedColumn(int column, Qt::SortOrder order);

    // Sets the rows in view, from `first` up to, not including, `end`.
    void setShownRows(int first, int end);

    // Makes cells of a row again if it is in view.
    void remakeCells(std::size_t row, std::initializer_list<int> columns);

    // The rows shown, until they are replaced, and whether system rules are among them.
    const rules::RuleRows& rows() const { return *m_rows; }
    const std::shared_ptr<const rules::RuleRows>& sharedRows() const { return m_rows; }
    bool rowsShowSystemRules() const { return m_rowsShowSystemRules; }

    const rules::RuleRef& ruleAt(int row) const;
    // The rows of the rules for which `isWanted` is true, ascending.
    template <class IsWanted> std::vector<std::size_t> rowsWhere(IsWanted isWanted) const
    {
        return m_rows->rowsWhere(m_rowsShowSystemRules, isWanted);
    }
    // The row of exactly this record; none when it is not shown.
    std::optional<int> rowOf(const rules::RuleRef& rule) const;
    // The rows of exactly these records, as far as they are shown, ascending. One pass over the rows, however
    // many records.
    std::vector<std::size_t> rowsOf(const std::vector<rules::RuleRef>& rules) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

protected:
    // Neither `workspace` nor `shaded`, the band flag of VisibleRows, is owned.
    RuleCellsModel(int columns, std::shared_ptr<const rules::RuleRows> rows, desktop::Workspace& workspace,
        bool& shaded, QObject* parent);

    // Replaces the rows.
    void setRows(std::shared_ptr<const rules::RuleRows> rows, bool includeSystemRules);
    // Replaces the rows by `rows` if these lack only one contiguous range of the current ones; all others
    // keep their cells. Otherwise returns false and changes nothing; then call setRows().
    bool removeRun(std::shared_ptr<const rules::RuleRows> rows);
    // Shows `text` in a cell until the next setRows().
    void setShownText(const QModelIndex& index, const QString& text);

    virtual workflow::RuleCell makeCell(std::size_t row, int column) const = 0;
    virtual std::string_view titleOf(int column) const = 0;

private:
    QVariant decoration(const workflow::RuleCell& cell) const;
    std::optional<std::size_t> startOfRun(const rules::RuleRows& rows) const;

    desktop::Workspace& m_workspace;
    const int m_columns;
    std::shared_ptr<const rules::RuleRows> m_rows;
    bool m_rowsShowSystemRules = false; // for m_rows
    int m_sortedColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    workflow::VisibleRows m_shownRows;
};

} // namespace quorvane::windows
