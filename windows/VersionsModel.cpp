#include "windows/VersionsModel.h"

#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/Shades.h"
#include "workflow/VersionChanges.h"

#include <QBrush>
#include <QDateTime>

#include <algorithm>
#include <array>
#include <utility>

namespace quorvane::windows {

namespace {

// Empty for 0, so that other counts stand out.
QString countText(std::uint64_t count, QChar sign)
{
    return count == 0 ? QString() : sign + inWords(count);
}

bool isNumber(VersionsModel::Column column)
{
    return column == VersionsModel::Column::number || column >= VersionsModel::Column::count;
}

QString cellText(const history::JournalVersion& version, VersionsModel::Column column)
{
    using Column = VersionsModel::Column;
    switch (column) {
    case Column::number:
        return QString::number(version.number);
    case Column::time:
        return versionTime(version);
    case Column::action:
        return versionAction(version);
    case Column::program:
        return version.program ? toQt(*version.program) : VersionsModel::tr("another program");
    case Column::count:
        return inWords(version.rules);
    case Column::added:
        return countText(version.added, QLatin1Char('+'));
    case Column::removed:
        return countText(version.removed, QChar(0x2212));
    case Column::changed:
        return countText(version.changed, QLatin1Char('~'));
    }
    return {};
}

QColor cellColor(const history::JournalVersion& version, VersionsModel::Column column)
{
    using Column = VersionsModel::Column;
    if (column == Column::action && !version.isReadable)
        return shades::failureText;
    if (column == Column::added)
        return shades::added;
    if (column == Column::removed)
        return shades::removed;
    return column == Column::changed ? shades::changed : shades::text;
}

} // namespace

QString versionTime(const history::JournalVersion& version)
{
    return QDateTime::fromSecsSinceEpoch(version.time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString versionAction(const history::JournalVersion& version)
{
    const QString action = toQt(workflow::actionText(version));
    if (!version.isReadable)
        return VersionsModel::tr("%1 (can no longer be read)").arg(action);
    if (version.state == history::VersionState::underWay)
        return VersionsModel::tr("%1 (not completed yet)").arg(action);
    if (version.state == history::VersionState::recovered)
        return VersionsModel::tr("%1 (completed later)").arg(action);
    return action;
}

void VersionsModel::setVersions(std::vector<history::JournalVersion> versions)
{
    // Usually new ones were added at the top; then the other rows stay.
    const std::size_t before = m_versions.size();
    const std::size_t come = versions.size() - std::min(versions.size(), before);
    const auto same = [](const history::JournalVersion& a, const history::JournalVersion& b) {
        return a.number == b.number && a.state == b.state && a.isReadable == b.isReadable;
    };
    const bool onlyCame = versions.size() >= before
        && std::equal(
            m_versions.begin(), m_versions.end(), versions.begin() + static_cast<std::ptrdiff_t>(come), same);
    std::vector<std::size_t> rows = wantedRows(versions);
    const auto newRows
        = std::count_if(rows.begin(), rows.end(), [come](std::size_t row) { return row < come; });
    if (!onlyCame)
        beginResetModel();
    else if (newRows > 0)
        beginInsertRows({}, 0, static_cast<int>(newRows) - 1);
    m_versions = std::move(versions);
    m_rows = std::move(rows);
    if (!onlyCame)
        endResetModel();
    else if (newRows > 0)
        endInsertRows();
}

void VersionsModel::setCounted(const QString& name)
{
    m_counted = name;
    constexpr int section = static_cast<int>(Column::count);
    Q_EMIT headerDataChanged(Qt::Horizontal, section, section);
}

void VersionsModel::setSearch(const QString& text)
{
    m_search = text;
    m_found.clear();
    showRows(wantedRows(m_versions));
}

void VersionsModel::addFound(std::int64_t version)
{
    if (m_found.contains(version))
        return;
    m_found.insert(version);
    const auto at = std::find_if(m_versions.begin(), m_versions.end(),
        [version](const history::JournalVersion& each) { return each.number == version; });
    if (at == m_versions.end())
        return;
    const auto place = static_cast<std::size_t>(at - m_versions.begin());
    const auto row = std::lower_bound(m_rows.begin(), m_rows.end(), place);
    if (row != m_rows.end() && *row == place)
        return;
    const int number = static_cast<int>(row - m_rows.begin());
    beginInsertRows({}, number, number);
    m_rows.insert(row, place);
    endInsertRows();
}

std::vector<std::size_t> VersionsModel::wantedRows(const std::vector<history::JournalVersion>& versions) const
{
    std::vector<std::size_t> rows;
    for (std::size_t place = 0; place < versions.size(); ++place) {
        if (isWanted(versions[place]))
            rows.push_back(place);
    }
    return rows;
}

bool VersionsModel::isWanted(const history::JournalVersion& version) const
{
    if (m_search.isEmpty() || m_found.contains(version.number))
        return true;
    const std::array searchedColumns{Column::number, Column::time, Column::action, Column::program};
    return std::any_of(searchedColumns.begin(), searchedColumns.end(),
        [&](Column column) { return cellText(version, column).contains(m_search, Qt::CaseInsensitive); });
}

void VersionsModel::showRows(std::vector<std::size_t> rows)
{
    if (rows == m_rows)
        return;
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

std::optional<int> VersionsModel::rowOf(std::int64_t version) const
{
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        if (m_versions[m_rows[row]].number == version)
            return static_cast<int>(row);
    }
    return std::nullopt;
}

int VersionsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int VersionsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QVariant VersionsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const history::JournalVersion& version = versionAt(index.row());
    const auto column = static_cast<Column>(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return cellText(version, column);
    case Qt::ToolTipRole:
        return column == Column::action ? plainToolTip(versionAction(version)) : QString();
    case Qt::ForegroundRole:
        return QBrush(cellColor(version, column));
    case Qt::TextAlignmentRole:
        return static_cast<int>((isNumber(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant VersionsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columns)
        return {};
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(
            (isNumber(static_cast<Column>(section)) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    const std::array<QString, columns> titles{tr("Version"), tr("Time"), tr("What Was Done"), tr("Program"),
        m_counted, tr("Added"), tr("Removed"), tr("Changed")};
    return titles[static_cast<std::size_t>(section)];
}

} // namespace quorvane::windows
