#include "windows/RulesTableModel.h"

#include "windows/QtText.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <array>

namespace quorvane {

namespace {

constexpr qreal stateImageOpacity = 0.8;
constexpr int stateImageSize = 12; // logical pixels
constexpr int cellFontSize = 12; // logical pixels

// Plain colours: what a test or a magnifier reads is what was meant.
QColor textColor(CellColor color)
{
    switch (color) {
    case CellColor::black:
        return Qt::black;
    case CellColor::red:
        return Qt::red;
    case CellColor::orange:
        return {0xff, 0x80, 0x00};
    case CellColor::blue:
        return Qt::blue;
    }
    return Qt::black;
}

// White of level 0.8 or 1.0, a fifth opaque, on the table's white.
QColor bandColor(bool shaded)
{
    constexpr qreal opacity = 0.2;
    const qreal level = (shaded ? 0.8 : 1.0) * opacity + (1.0 - opacity);
    return QColor::fromRgbF(static_cast<float>(level), static_cast<float>(level), static_cast<float>(level));
}

QIcon fadedIcon(const QString& file)
{
    QIcon faded;
    for (const qreal scale : {1.0, 2.0, 3.0}) {
        QPixmap image(QSize(stateImageSize, stateImageSize) * scale);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setOpacity(stateImageOpacity);
        painter.drawPixmap(QRect(0, 0, stateImageSize, stateImageSize),
            QIcon(file).pixmap(QSize(stateImageSize, stateImageSize), scale));
        painter.end();
        faded.addPixmap(image);
    }
    return faded;
}

QFont cellFont(bool bold)
{
    QFont font;
    font.setPixelSize(cellFontSize);
    font.setBold(bold);
    return font;
}

} // namespace

RulesTableModel::RulesTableModel(const RuleManager& store, Workspace& workspace, QObject* parent)
    : QAbstractTableModel(parent)
    , m_store(store)
    , m_workspace(workspace)
    , m_rows(store.rows())
{
}

void RulesTableModel::reload()
{
    beginResetModel();
    m_rows = m_store.rows();
    m_rowsShowSystemRules = m_showsSystemRules;
    m_shownRows.forget();
    endResetModel();
}

void RulesTableModel::setShownRows(int first, int end)
{
    m_shownRows.show(static_cast<std::size_t>(std::max(first, 0)),
        static_cast<std::size_t>(std::clamp(end, 0, rowCount())),
        [this](std::size_t row, RuleColumn column) { return makeCell(row, column); });
}

void RulesTableModel::setSortedColumn(int column, Qt::SortOrder order)
{
    m_sortedColumn = column;
    m_sortOrder = order;
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ruleColumnCount - 1);
}

const RuleRef& RulesTableModel::ruleAt(int row) const
{
    return m_rows->at(static_cast<std::size_t>(row), m_rowsShowSystemRules);
}

int RulesTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows->count(m_rowsShowSystemRules));
}

int RulesTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ruleColumnCount;
}

QVariant RulesTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const auto column = static_cast<std::size_t>(index.column());
    const ShownRow* shown = m_shownRows.find(row);
    if (role == Qt::BackgroundRole)
        return shown == nullptr ? QVariant() : QVariant(QBrush(bandColor(shown->shaded)));
    if (role == Qt::FontRole)
        return cellFont(static_cast<RuleColumn>(column) == RuleColumn::application);
    static constexpr std::array cellRoles{Qt::DisplayRole, Qt::DecorationRole, Qt::ForegroundRole,
        Qt::ToolTipRole, Qt::AccessibleDescriptionRole};
    if (std::find(cellRoles.begin(), cellRoles.end(), role) == cellRoles.end())
        return {};
    const RuleCell cell
        = shown == nullptr ? makeCell(row, static_cast<RuleColumn>(column)) : shown->cells[column];
    switch (role) {
    case Qt::DisplayRole:
        return toQt(cell.text);
    case Qt::DecorationRole:
        return decoration(cell);
    case Qt::ForegroundRole:
        return QBrush(textColor(cell.color));
    case Qt::ToolTipRole:
        return toQt(cell.toolTip);
    default:
        return toQt(cell.description);
    }
}

QVariant RulesTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < ruleColumnCount)
        return toQt(columnTitle(static_cast<RuleColumn>(section)));
    if (orientation == Qt::Horizontal && role == Qt::AccessibleDescriptionRole && section == m_sortedColumn)
        return m_sortOrder == Qt::AscendingOrder ? tr("sorted ascending") : tr("sorted descending");
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    return {};
}

RuleCell RulesTableModel::makeCell(std::size_t row, RuleColumn column) const
{
    return ruleCell(m_store, *m_rows, row, m_rowsShowSystemRules, column);
}

QVariant RulesTableModel::decoration(const RuleCell& cell) const
{
    static const QIcon systemIcon = fadedIcon(QStringLiteral(":/images/system.png"));
    static const QIcon recentIcon = fadedIcon(QStringLiteral(":/images/new.png"));
    if (cell.image != StateImage::none)
        return cell.image == StateImage::system ? systemIcon : recentIcon;
    return cell.iconFile ? QVariant(m_workspace.iconForFile(*cell.iconFile)) : QVariant();
}

} // namespace quorvane
