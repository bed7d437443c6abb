#pragma once

#include "workflow/CleanUp.h"

#include <QAbstractTableModel>

#include <cstddef>
#include <vector>

namespace quorvane::windows {

// Rules that can be removed, with a tick for each that will be: initially those without doubt. User interface
// thread only.
class CleanUpModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { rule, reason, doubt };
    static constexpr int columns = 3;

    using QAbstractTableModel::QAbstractTableModel;

    // Ticks changed by the user are kept for rules that are still listed.
    void setCandidates(std::vector<workflow::DispensableRule> candidates);
    void setAllTicked(bool areTicked);
    std::size_t tickedCount() const { return m_ticked; }
    std::vector<workflow::DispensableRule> ticked() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    void ticksDidChange();

private:
    struct Row {
        workflow::DispensableRule candidate;
        bool isTicked;
    };

    QString text(const Row& row, int column) const;

    std::vector<Row> m_rows;
    std::size_t m_ticked = 0;
};

} // namespace quorvane::windows
