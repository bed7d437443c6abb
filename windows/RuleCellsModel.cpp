#include "windows/RuleCellsModel.h"

#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QIcon>

#include <algorithm>
#include <array>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr int cellFontSize = 12; // logical pixels

QColor textColor(workflow::CellColor color)
{
    switch (color) {
    case workflow::CellColor::black:
        return shades::black;
    case workflow::CellColor::red:
        return shades::red;
    case workflow::CellColor::orange:
        return shades::orange;
    case workflow::CellColor::blue:
        return shades::blue;
    case workflow::CellColor::grey:
        return shades::grey;
    }
    return shades::black;
}

QFont cellFont(bool bold, bool italic)
{
    QFont font;
    font.setPixelSize(cellFontSize);
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

} // namespace

RuleCellsModel::RuleCellsModel(int columns, std::shared_ptr<const rules::RuleRows> rows,
    desktop::Workspace& workspace, bool& shaded, QObject* parent)
    : QAbstractTableModel(parent)
    , m_workspace(workspace)
    , m_columns(columns)
    , m_rows(std::move(rows))
    , m_shownRows(columns, shaded)
{
}

void RuleCellsModel::setRows(std::shared_ptr<const rules::RuleRows> rows, bool includeSystemRules)
{
    beginResetModel();
    m_rows = std::move(rows);
    m_rowsShowSystemRules = includeSystemRules;
    m_shownRows.forget();
    endResetModel();
}

bool RuleCellsModel::removeRun(std::shared_ptr<const rules::RuleRows> rows)
{
    const auto first = startOfRun(*rows);
    if (!first)
        return false;
    const std::size_t count = m_rows->count(m_rowsShowSystemRules) - rows->count(m_rowsShowSystemRules);
    if (count == 0)
        return true;
    beginRemoveRows({}, static_cast<int>(*first), static_cast<int>(*first + count - 1));
    m_rows = std::move(rows);
    m_shownRows.remove(*first, count);
    endRemoveRows();
    return true;
}

// The start of the range of current rows that is missing in `rows`; none when they differ in another way.
std::optional<std::size_t> RuleCellsModel::startOfRun(const rules::RuleRows& rows) const
{
    const std::size_t left = rows.count(m_rowsShowSystemRules);
    const rules::RuleRows::Common common = rows.commonWith(*m_rows, m_rowsShowSystemRules);
    const bool isOneRun = left <= m_rows->count(m_rowsShowSystemRules) && common.start + common.end >= left;
    return isOneRun ? std::optional(common.start) : std::nullopt;
}

void RuleCellsModel::remakeCells(std::size_t row, std::initializer_list<int> columns)
{
    if (row >= m_rows->count(m_rowsShowSystemRules))
        return;
    const auto make = [this](std::size_t r, int column) { return makeCell(r, column); };
    const auto remake = [&](int column) { return m_shownRows.remake(row, column, make); };
    if (std::all_of(columns.begin(), columns.end(), remake))
        Q_EMIT dataChanged(index(static_cast<int>(row), 0), index(static_cast<int>(row), m_columns - 1));
}

void RuleCellsModel::setShownText(const QModelIndex& index, const QString& text)
{
    m_shownRows.setText(static_cast<std::size_t>(index.row()), index.column(), fromQt(text));
    Q_EMIT dataChanged(index, index);
}

void RuleCellsModel::setShownRows(int first, int end)
{
    m_shownRows.show(static_cast<std::size_t>(std::max(first, 0)),
        static_cast<std::size_t>(std::clamp(end, 0, rowCount())),
        [this](std::size_t row, int column) { return makeCell(row, column); });
}

void RuleCellsModel::setSortedColumn(int column, Qt::SortOrder order)
{
    m_sortedColumn = column;
    m_sortOrder = order;
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, m_columns - 1);
}

const rules::RuleRef& RuleCellsModel::ruleAt(int row) const
{
    return m_rows->at(static_cast<std::size_t>(row), m_rowsShowSystemRules);
}

std::optional<int> RuleCellsModel::rowOf(const rules::RuleRef& rule) const
{
    const auto rows = rowsWhere([&rule](const rules::RuleRef& each) { return each == rule; });
    return rows.empty() ? std::nullopt : std::optional(static_cast<int>(rows.front()));
}

std::vector<std::size_t> RuleCellsModel::rowsOf(const std::vector<rules::RuleRef>& rules) const
{
    std::vector<const void*> records;
    records.reserve(rules.size());
    for (const rules::RuleRef& rule : rules)
        records.push_back(addressOf(rule));
    std::sort(records.begin(), records.end(), std::less<>());
    std::vector<std::size_t> rows;
    for (int row = 0; row < rowCount(); ++row) {
        if (std::binary_search(records.begin(), records.end(), addressOf(ruleAt(row)), std::less<>()))
            rows.push_back(static_cast<std::size_t>(row));
    }
    return rows;
}

int RuleCellsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows->count(m_rowsShowSystemRules));
}

int RuleCellsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_columns;
}

QVariant RuleCellsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const workflow::ShownRow* shown = m_shownRows.find(row);
    if (role == Qt::BackgroundRole)
        return shown == nullptr ? QVariant() : QVariant(QBrush(shown->shaded ? shades::band : shades::table));
    if (role == Qt::FontRole)
        return cellFont(index.column() == 0,
            shown != nullptr && shown->cells[static_cast<std::size_t>(index.column())].italic);
    static constexpr std::array cellRoles{Qt::DisplayRole, Qt::EditRole, Qt::DecorationRole,
        Qt::ForegroundRole, Qt::ToolTipRole, Qt::AccessibleDescriptionRole};
    if (std::find(cellRoles.begin(), cellRoles.end(), role) == cellRoles.end())
        return {};
    const workflow::RuleCell cell = shown == nullptr ? makeCell(row, index.column())
                                                     : shown->cells[static_cast<std::size_t>(index.column())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return toQt(cell.text);
    case Qt::DecorationRole:
        return decoration(cell);
    case Qt::ForegroundRole:
        return QBrush(textColor(cell.color));
    case Qt::ToolTipRole:
        return plainToolTip(toQt(cell.toolTip));
    default:
        return toQt(cell.description);
    }
}

QVariant RuleCellsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < m_columns)
        return toQt(titleOf(section));
    if (orientation == Qt::Horizontal && role == Qt::AccessibleDescriptionRole && section == m_sortedColumn)
        return m_sortOrder == Qt::AscendingOrder ? tr("sorted ascending") : tr("sorted descending");
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    return {};
}

QVariant RuleCellsModel::decoration(const workflow::RuleCell& cell) const
{
    if (cell.image != workflow::StateImage::none)
        return cell.image == workflow::StateImage::system ? systemRuleImage() : recentRuleImage();
    if (cell.isIconFileMissing)
        return missingProgramImage();
    return cell.iconFile ? QVariant(m_workspace.iconForFile(*cell.iconFile, cell.iconRoot)) : QVariant();
}

} // namespace quorvane::windows
