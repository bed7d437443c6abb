#include "windows/CleanUpModel.h"

#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "workflow/RuleSentence.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace quorvane::windows {

void CleanUpModel::setCandidates(std::vector<workflow::DispensableRule> candidates)
{
    std::unordered_map<const void*, bool> changed; // by address of the record
    for (const Row& row : m_rows) {
        if (row.isTicked != row.candidate.doubt.empty())
            changed.emplace(addressOf(row.candidate.rule), row.isTicked);
    }
    std::vector<Row> rows;
    rows.reserve(candidates.size());
    for (workflow::DispensableRule& candidate : candidates) {
        const auto kept = changed.find(addressOf(candidate.rule));
        const bool isTicked = kept == changed.end() ? candidate.doubt.empty() : kept->second;
        rows.push_back({std::move(candidate), isTicked});
    }
    beginResetModel();
    m_rows = std::move(rows);
    m_ticked = static_cast<std::size_t>(
        std::count_if(m_rows.begin(), m_rows.end(), [](const Row& row) { return row.isTicked; }));
    endResetModel();
    Q_EMIT ticksDidChange();
}

void CleanUpModel::setAllTicked(bool areTicked)
{
    for (Row& row : m_rows)
        row.isTicked = areTicked;
    m_ticked = areTicked ? m_rows.size() : 0;
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0, rule), index(rowCount() - 1, rule), {Qt::CheckStateRole});
    Q_EMIT ticksDidChange();
}

std::vector<workflow::DispensableRule> CleanUpModel::ticked() const
{
    std::vector<workflow::DispensableRule> rules;
    for (const Row& row : m_rows) {
        if (row.isTicked)
            rules.push_back(row.candidate);
    }
    return rules;
}

int CleanUpModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int CleanUpModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString CleanUpModel::text(const Row& row, int column) const
{
    switch (column) {
    case rule:
        return toQt(workflow::ruleSentence(valueOf(row.candidate.rule)));
    case reason:
        return toQt(row.candidate.reason);
    default:
        return toQt(row.candidate.doubt);
    }
}

QVariant CleanUpModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Row& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return text(row, index.column());
    case Qt::ToolTipRole:
        return plainToolTip(text(row, index.column()));
    case Qt::CheckStateRole:
        return index.column() != rule ? QVariant() : row.isTicked ? Qt::Checked : Qt::Unchecked;
    default:
        return {};
    }
}

QVariant CleanUpModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case rule:
        return tr("Rule");
    case reason:
        return tr("Why it can go");
    default:
        return tr("Why it might stay");
    }
}

Qt::ItemFlags CleanUpModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.column() == rule ? flags | Qt::ItemIsUserCheckable : flags;
}

bool CleanUpModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.column() != rule)
        return false;
    Row& row = m_rows[static_cast<std::size_t>(index.row())];
    const bool isTicked = value.value<Qt::CheckState>() == Qt::Checked;
    if (std::exchange(row.isTicked, isTicked) != isTicked)
        m_ticked += isTicked ? 1 : std::size_t(-1);
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
    Q_EMIT ticksDidChange();
    return true;
}

} // namespace quorvane::windows
