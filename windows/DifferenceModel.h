#pragma once

#include "workflow/DifferenceTable.h"

#include <QAbstractTableModel>

#include <string>
#include <vector>

namespace quorvane::windows {

// A difference as a Qt table. The meaning of a row's colour is also in words in its first cell. User
// interface thread only.
class DifferenceModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    // No rows when null; the columns stay.
    void setTable(workflow::DifferenceTablePtr table);
    const workflow::DifferenceTablePtr& table() const { return m_table; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    workflow::DifferenceTablePtr m_table;
    const std::vector<std::string>* m_titles = nullptr; // of the last table; they outlive it
};

} // namespace quorvane::windows
