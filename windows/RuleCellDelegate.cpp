#include "windows/RuleCellDelegate.h"

#include "windows/OneLineText.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"
#include "windows/TickHeader.h"

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QTableView>

#include <limits>

namespace quorvane::windows {

namespace {

constexpr int roomBesideCellText = 5; // logical pixels on each side

// True when no visible column follows in that direction.
bool isOutermost(const QHeaderView& header, int column, int direction)
{
    int place = header.visualIndex(column) + direction;
    while (place >= 0 && place < header.count() && header.isSectionHidden(header.logicalIndex(place)))
        place += direction;
    return place < 0 || place == header.count();
}

// This cell's part of the frame around the row with the keyboard focus.
void paintKeyboardFrame(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
{
    const auto* view = qobject_cast<const QTableView*>(option.widget);
    if (view == nullptr || !view->hasFocus() || view->currentIndex().row() != index.row())
        return;
    const QRect cell = option.rect.adjusted(0, 0, 0, -1);
    painter->setPen(shades::keyboardFrame);
    painter->drawLine(cell.topLeft(), option.rect.topRight());
    painter->drawLine(cell.bottomLeft(), QPoint(option.rect.right(), cell.bottom()));
    const bool isFirst = isOutermost(*view->horizontalHeader(), index.column(), -1);
    const bool isLast = isOutermost(*view->horizontalHeader(), index.column(), 1);
    const bool isMirrored = option.direction == Qt::RightToLeft;
    if (isMirrored ? isLast : isFirst)
        painter->drawLine(cell.topLeft(), cell.bottomLeft());
    if (isMirrored ? isFirst : isLast)
        painter->drawLine(cell.topRight(), cell.bottomRight());
}

// Paths and programs run from left to right in any layout.
QString leftToRight(const QString& text)
{
    constexpr QChar isolate(0x2066);
    constexpr QChar endOfIsolate(0x2069);
    return isolate + text + endOfIsolate;
}

} // namespace

void RuleCellDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    cell.state.setFlag(QStyle::State_HasFocus, false);
    const QStyle& style = cell.widget == nullptr ? *QApplication::style() : *cell.widget->style();
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget);
    if (cell.features.testFlag(QStyleOptionViewItem::HasCheckIndicator)) {
        paintTick(*painter, cell, style);
    } else if (cell.text.isEmpty() && !cell.icon.isNull()) {
        QRect image(0, 0, stateImageSize, stateImageSize);
        image.moveCenter(option.rect.center());
        cell.icon.paint(painter, image);
    } else {
        // The background is painted already. Text and icon keep their colours in a selected row, since these
        // have a meaning.
        cell.backgroundBrush = Qt::NoBrush;
        cell.state.setFlag(QStyle::State_Selected, false);
        cell.rect.adjust(roomBesideCellText, 0, -roomBesideCellText, 0);
        style.drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    }
    paintKeyboardFrame(painter, option, index);
}

void RuleCellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (option->direction == Qt::RightToLeft && !option->text.isEmpty())
        option->text = leftToRight(option->text);
}

QWidget* RuleCellDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (editor != nullptr)
        editor->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
    if (auto* field = qobject_cast<QLineEdit*>(editor)) {
        field->setTextMargins(roomBesideCellText, 0, roomBesideCellText, 0);
        field->setMaxLength(
            std::numeric_limits<int>::max()); // opening the editor must not truncate a long text
        keepToOneLine(*field);
    }
    return editor;
}

QSize RuleCellDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QStyledItemDelegate::sizeHint(option, index) + QSize(2 * roomBesideCellText, 0);
}

bool RuleCellDelegate::editorEvent(
    QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option, const QModelIndex& index)
{
    const QVariant state = index.data(Qt::CheckStateRole);
    if (!state.isValid())
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    // The view reports a single click on release, and the second of a double click on press.
    const bool isClick
        = event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseButtonDblClick;
    if (!isClick || static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return false;
    return model->setData(index, state.value<Qt::CheckState>() == Qt::Checked ? Qt::Unchecked : Qt::Checked,
        Qt::CheckStateRole);
}

} // namespace quorvane::windows
