#pragma once

#include "platform/Workspace.h"
#include "rules/RuleManager.h"
#include "workflow/ShownRows.h"

#include <QAbstractTableModel>

#include <memory>

namespace quorvane {

// The rows of a rule store as a Qt table.
//
// Keeps the rows it last showed until it is told to reload, so that Qt sees no row change behind its back.
// Cells of rows in view are made once; any other cell is made when it is asked for.
class RulesTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // Neither is owned.
    RulesTableModel(const RuleManager& store, Workspace& workspace, QObject* parent = nullptr);

    bool showsSystemRules() const { return m_showsSystemRules; }
    // Takes effect with the next reload.
    void setShowsSystemRules(bool shows) { m_showsSystemRules = shows; }

    // Takes the store's present rows.
    void reload();

    // Which column is the primary one of the present order; none when `column` is negative. Told in words
    // only: the header draws its own mark.
    void setSortedColumn(int column, Qt::SortOrder order);

    // The view shows the rows from `first` up to, not including, `end`.
    void setShownRows(int first, int end);

    const RuleRef& ruleAt(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    RuleCell makeCell(std::size_t row, RuleColumn column) const;
    QVariant decoration(const RuleCell& cell) const;

    const RuleManager& m_store;
    Workspace& m_workspace;
    std::shared_ptr<const RuleRows> m_rows;
    bool m_showsSystemRules = false;
    bool m_rowsShowSystemRules = false; // as m_rows was taken
    int m_sortedColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    ShownRows m_shownRows;
};

} // namespace quorvane
