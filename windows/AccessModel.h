#pragma once

#include "workflow/AccessTree.h"

#include <QAbstractItemModel>

namespace quorvane::windows {

// The access map as a Qt tree. Everything that the bars show is also in words beside them. User interface
// thread only.
class AccessModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { place, bar, allow, deny, watch, programs, columnCountOfAll };
    // The data of a bar: AccessShares.
    static constexpr int sharesRole = Qt::UserRole;

    using QAbstractItemModel::QAbstractItemModel;

    // No rows when null.
    void setTree(workflow::AccessTreePtr tree);
    const workflow::AccessTreePtr& tree() const { return m_tree; }
    // Requires a valid index.
    std::size_t branchAt(const QModelIndex& index) const { return index.internalId(); }
    QModelIndex indexOf(std::size_t branch) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const std::vector<std::size_t>& branchesIn(const QModelIndex& parent) const;
    QString textOf(const workflow::AccessBranch& branch, int column) const;
    QVariant sharesOf(std::size_t branch) const;

    workflow::AccessTreePtr m_tree;
    std::vector<int> m_rows; // by branch: its row in its parent
    std::vector<std::size_t> m_longest; // by branch: the largest number of rules among it and its siblings
};

// The lengths of the parts of a bar, relative to the longest bar among its siblings, which is 1 in total.
struct AccessShares {
    double allow = 0;
    double deny = 0;
    double watch = 0;
};

// "12 allow, 3 deny", without zero counts.
QString accessText(const workflow::AccessCounts& counts);

} // namespace quorvane::windows

Q_DECLARE_METATYPE(quorvane::windows::AccessShares)
