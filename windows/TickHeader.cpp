#include "windows/TickHeader.h"

#include <QPainter>
#include <QStyle>

namespace quorvane::windows {

void paintTick(QPainter& painter, QStyleOptionViewItem option, const QStyle& style)
{
    QRect box(
        0, 0, style.pixelMetric(QStyle::PM_IndicatorWidth), style.pixelMetric(QStyle::PM_IndicatorHeight));
    box.moveCenter(option.rect.center());
    option.rect = box;
    option.state.setFlag(QStyle::State_On, option.checkState == Qt::Checked);
    option.state.setFlag(QStyle::State_Off, option.checkState == Qt::Unchecked);
    option.state.setFlag(QStyle::State_NoChange, option.checkState == Qt::PartiallyChecked);
    style.drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &option, &painter, option.widget);
}

TickHeader::TickHeader(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
{
}

void TickHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int section) const
{
    QHeaderView::initStyleOptionForIndex(option, section);
    // By default Qt's indicator points down then.
    if (option->sortIndicator != QStyleOptionHeader::None)
        option->sortIndicator = sortIndicatorOrder() == Qt::AscendingOrder ? QStyleOptionHeader::SortUp
                                                                           : QStyleOptionHeader::SortDown;
}

void TickHeader::paintSection(QPainter* painter, const QRect& rect, int section) const
{
    painter->save();
    QHeaderView::paintSection(painter, rect, section);
    painter->restore();
    const QVariant state = model()->headerData(section, Qt::Horizontal, Qt::CheckStateRole);
    if (!state.isValid())
        return;
    QStyleOptionViewItem option;
    option.initFrom(this);
    option.rect = rect;
    option.checkState = state.value<Qt::CheckState>();
    paintTick(*painter, option, *style());
}

} // namespace quorvane::windows
