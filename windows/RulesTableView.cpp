#include "windows/RulesTableView.h"

#include "windows/PlainText.h"
#include "windows/RuleCellDelegate.h"
#include "windows/RuleCellsModel.h"
#include "windows/TickHeader.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr int pixelsPerRow = 24;
constexpr int iconWidth = 16;
constexpr int headerHeight = 26;
constexpr int leastColumnWidth = 30;
constexpr int widestFittedColumn = 260;
constexpr int narrowestPath = 130;

// The maximum column width for which all columns fit into `room`.
int widestThatFits(QList<int> widths, int room)
{
    std::sort(widths.begin(), widths.end());
    for (int column = 0; column < widths.size(); ++column) {
        const int share = room / static_cast<int>(widths.size() - column);
        if (widths[column] > share)
            return share;
        room -= widths[column];
    }
    return std::numeric_limits<int>::max();
}

} // namespace

RulesTableView::RulesTableView(QWidget* parent)
    : QTableView(parent)
{
    setItemDelegate(new RuleCellDelegate(this));
    setHorizontalHeader(new TickHeader(this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::SelectedClicked | QAbstractItemView::EditKeyPressed);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setTextElideMode(Qt::ElideMiddle);
    setIconSize(QSize(iconWidth, iconWidth));
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    verticalHeader()->setVisible(false);
    // One height for all avoids measuring a million rows.
    verticalHeader()->setMinimumSectionSize(pixelsPerRow);
    verticalHeader()->setDefaultSectionSize(pixelsPerRow);
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setMinimumHeight(headerHeight);
    horizontalHeader()->setMinimumSectionSize(leastColumnWidth);
    constexpr int measuredRows = 200;
    horizontalHeader()->setResizeContentsPrecision(measuredRows);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int resized, int, int width) {
        const bool isBeingHidden = width == 0;
        if (!m_isMakingRoom && !isBeingHidden && resized != m_pathColumn && resized < m_wishedWidths.size())
            m_wishedWidths[resized] = width;
    });
}

void RulesTableView::setSelectionModel(QItemSelectionModel* selectionModel)
{
    QTableView::setSelectionModel(selectionModel);
    horizontalHeader()->setSelectionModel(new QItemSelectionModel(selectionModel->model(), selectionModel));
}

void RulesTableView::setEmptyText(const QString& text)
{
    m_emptyText = text;
    setAccessibleDescription(model() != nullptr && model()->rowCount() == 0 ? text : QString());
    viewport()->update();
}

void RulesTableView::showOrder(int column, Qt::SortOrder order)
{
    horizontalHeader()->setSortIndicatorShown(column >= 0);
    horizontalHeader()->setSortIndicator(column, order);
    if (auto* rules = qobject_cast<RuleCellsModel*>(model()))
        rules->setSortedColumn(column, order);
}

void RulesTableView::setPathColumn(int column)
{
    if (column == m_pathColumn && m_wishedWidths.size() == horizontalHeader()->count())
        return;
    m_pathColumn = column;
    m_wishedWidths.clear();
    for (int each = 0; each < horizontalHeader()->count(); ++each) {
        horizontalHeader()->setSectionResizeMode(
            each, each == column ? QHeaderView::Stretch : QHeaderView::Interactive);
        m_wishedWidths.append(columnWidth(each));
    }
    m_fittedWidths = m_wishedWidths;
}

void RulesTableView::fitColumns()
{
    QList<int> widths;
    for (int column = 0; column < horizontalHeader()->count(); ++column) {
        const int needed = std::max(sizeHintForColumn(column), horizontalHeader()->sectionSizeHint(column));
        widths.append(std::min(needed, widestFittedColumn));
    }
    m_fittedWidths = widths;
    setWishedWidths(widths);
}

void RulesTableView::refitColumns()
{
    if (!areWidthsChosen())
        fitColumns();
}

void RulesTableView::setWishedWidths(const QList<int>& widths)
{
    m_wishedWidths = widths;
    makeRoomForPath();
}

void RulesTableView::makeRoomForPath()
{
    if (m_pathColumn < 0 || m_wishedWidths.size() != horizontalHeader()->count())
        return;
    std::vector<int> columns;
    QList<int> widths;
    for (int column = 0; column < m_wishedWidths.size(); ++column) {
        if (column == m_pathColumn || isColumnHidden(column))
            continue;
        columns.push_back(column);
        widths.append(m_wishedWidths[column]);
    }
    const int roomForPath = isColumnHidden(m_pathColumn) ? 0 : narrowestPath;
    const int widest = widestThatFits(widths, viewport()->width() - roomForPath);
    const QScopedValueRollback making(m_isMakingRoom, true);
    for (const int column : columns)
        setColumnWidth(column, std::max(std::min(m_wishedWidths[column], widest), leastColumnWidth));
}

int RulesTableView::shownColumns() const
{
    return horizontalHeader()->count() - horizontalHeader()->hiddenSectionCount();
}

void RulesTableView::setColumnShown(int column, bool isShown)
{
    if (!isShown && shownColumns() == 1)
        return;
    {
        const QScopedValueRollback making(
            m_isMakingRoom, true); // a column may come back narrower than wished
        setColumnHidden(column, !isShown);
    }
    makeRoomForPath();
    selectionModel()->setCurrentIndex(shownCell(currentIndex()), QItemSelectionModel::NoUpdate);
}

// The cell itself, or the first visible one of its row when its column is hidden.
QModelIndex RulesTableView::shownCell(const QModelIndex& index) const
{
    QModelIndex cell = index;
    for (int place = 0; cell.isValid() && isColumnHidden(cell.column()); ++place)
        cell = index.siblingAtColumn(horizontalHeader()->logicalIndex(place));
    return cell;
}

void RulesTableView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    QTableView::scrollTo(shownCell(index), hint);
}

void RulesTableView::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    makeRoomForPath();
}

std::vector<std::size_t> RulesTableView::selectedRows() const
{
    std::vector<std::size_t> rows;
    anySelectedRow([&rows](std::size_t row) {
        rows.push_back(row);
        return false;
    });
    return rows;
}

void RulesTableView::selectRows(const std::vector<std::size_t>& rows)
{
    if (rows.empty())
        return;
    QItemSelection selection;
    const auto row = [&rows](std::size_t place) { return static_cast<int>(rows[place]); };
    for (std::size_t first = 0, next = 1; first < rows.size(); first = next++) {
        while (next < rows.size() && rows[next] == rows[next - 1] + 1)
            ++next;
        selection.select(
            model()->index(row(first), 0), model()->index(row(next - 1), model()->columnCount() - 1));
    }
    selectionModel()->setCurrentIndex(model()->index(row(0), 0), QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    scrollTo(currentIndex());
}

std::vector<std::pair<std::size_t, std::size_t>> RulesTableView::selectedRanges() const
{
    // The ranges are in the order of the clicks.
    QItemSelection selected = selectionModel()->selection();
    std::sort(
        selected.begin(), selected.end(), [](const auto& a, const auto& b) { return a.top() < b.top(); });
    std::vector<std::pair<std::size_t, std::size_t>> ranges;
    int next = 0;
    for (const QItemSelectionRange& range : selected) {
        const int first = std::max(next, range.top());
        if (first > range.bottom())
            continue;
        next = range.bottom() + 1;
        ranges.emplace_back(first, next);
    }
    return ranges;
}

bool RulesTableView::anySelectedRow(const std::function<bool(std::size_t row)>& question) const
{
    for (const auto& [first, end] : selectedRanges()) {
        for (std::size_t row = first; row < end; ++row) {
            if (question(row))
                return true;
        }
    }
    return false;
}

std::optional<std::size_t> RulesTableView::onlySelectedRow() const
{
    std::optional<std::size_t> only;
    const bool several
        = anySelectedRow([&only](std::size_t row) { return std::exchange(only, row).has_value(); });
    return several ? std::nullopt : only;
}

void RulesTableView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool fromKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex row = fromKeyboard ? currentIndex() : indexAt(event->pos());
    if (!row.isValid())
        return;
    scrollTo(row);
    Q_EMIT menuRequested(
        row.row(), fromKeyboard ? viewport()->mapToGlobal(visualRect(row).bottomLeft()) : event->globalPos());
}

bool RulesTableView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    if (trigger != EditKeyPressed && trigger != AllEditTriggers)
        return QTableView::edit(index, trigger, event);
    for (int column = 0; index.isValid() && column < model()->columnCount(); ++column) {
        const QModelIndex cell = index.siblingAtColumn(column);
        if (cell.flags().testFlag(Qt::ItemIsEditable)) {
            setColumnShown(column, true);
            setCurrentIndex(cell); // selects it alone: the edit is for no other row
            return QTableView::edit(cell, trigger, event);
        }
    }
    return false;
}

void RulesTableView::paintEvent(QPaintEvent* event)
{
    auto* rules = qobject_cast<RuleCellsModel*>(model());
    // When many rows have just gone, the view may still be scrolled to behind the last one: none is in view
    // then.
    const int first = rules == nullptr ? -1 : rowAt(0);
    if (first >= 0) {
        const int last = rowAt(viewport()->height() - 1);
        rules->setShownRows(first, last < 0 ? rules->rowCount() : last + 1);
    }
    QTableView::paintEvent(event);
    if (model() != nullptr && model()->rowCount() == 0) {
        QPainter painter(viewport());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(
            viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, withBreakPoints(m_emptyText));
    }
}

QModelIndex RulesTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    const bool alongTheRow = action == MoveHome || action == MoveEnd;
    return QTableView::moveCursor(action, alongTheRow ? modifiers | Qt::ControlModifier : modifiers);
}

void RulesTableView::keyboardSearch(const QString& search)
{
    if (!search.trimmed().isEmpty()) // the space bar selects rows instead
        Q_EMIT textTyped(search);
}

void RulesTableView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    // Arrow keys would not work from a hidden cell.
    if (const QModelIndex shown = shownCell(current); shown != current)
        return selectionModel()->setCurrentIndex(shown, QItemSelectionModel::NoUpdate);
    QTableView::currentChanged(current, previous);
    viewport()->update(); // the focus frame surrounds whole rows
}

} // namespace quorvane::windows
