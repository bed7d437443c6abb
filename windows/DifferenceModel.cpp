#include "windows/DifferenceModel.h"

#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/Shades.h"

#include <QBrush>

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvane::windows {

namespace {

using Change = workflow::DifferenceTable::Change;

// Truncated: a text of a megabyte takes long to measure, and no cell could show it.
QString shownText(const std::string& text)
{
    constexpr std::size_t longest = 4000;
    return text.size() <= longest ? toQt(text)
                                  : toQt(std::string_view(text).substr(0, longest)) + QChar(0x2026);
}

QColor textColor(Change change)
{
    switch (change) {
    case Change::added:
        return shades::added;
    case Change::removed:
        return shades::removed;
    case Change::changed:
        break;
    }
    return shades::changed;
}

QColor background(Change change)
{
    switch (change) {
    case Change::added:
        return shades::addedBand;
    case Change::removed:
        return shades::removedBand;
    case Change::changed:
        break;
    }
    return shades::changedBand;
}

QString signOf(Change change)
{
    switch (change) {
    case Change::added:
        return QStringLiteral("+ ");
    case Change::removed:
        return QStringLiteral("\u2212 ");
    case Change::changed:
        break;
    }
    return QStringLiteral("~ ");
}

} // namespace

void DifferenceModel::setTable(workflow::DifferenceTablePtr table)
{
    beginResetModel();
    m_table = std::move(table);
    if (m_table)
        m_titles = &m_table->titles();
    endResetModel();
}

int DifferenceModel::rowCount(const QModelIndex& parent) const
{
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return parent.isValid() || !m_table ? 0 : static_cast<int>(std::min(m_table->rows(), most));
}

int DifferenceModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || m_titles == nullptr ? 0 : static_cast<int>(m_titles->size());
}

QVariant DifferenceModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const Change change = m_table->change(row);
    switch (role) {
    case Qt::DisplayRole: {
        const QString text = shownText(m_table->text(row, static_cast<std::size_t>(index.column())));
        return index.column() == 0 ? signOf(change) + text : text;
    }
    case Qt::ToolTipRole:
        return plainToolTip(shownText(m_table->line(row)));
    case Qt::ForegroundRole:
        return QBrush(index.column() == 0 ? textColor(change) : shades::text);
    case Qt::BackgroundRole:
        return QBrush(background(change));
    default:
        return {};
    }
}

QVariant DifferenceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    return role == Qt::DisplayRole ? toQt((*m_titles)[static_cast<std::size_t>(section)]) : QVariant();
}

} // namespace quorvane::windows
