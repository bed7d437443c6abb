#include "windows/AccessBars.h"

#include "windows/Shades.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>

namespace quorvane::windows {

namespace {

constexpr int besideBar = 6; // logical pixels
constexpr int aboveBar = 6;

void paintPart(QPainter& painter, const QRectF& part, const QBrush& brush)
{
    painter.setPen(shades::text);
    painter.setBrush(brush);
    painter.drawRect(part);
}

// Even the smallest share is visible.
void paintBar(QPainter& painter, const QRectF& room, const AccessShares& shares)
{
    constexpr double narrowest = 3;
    double left = room.left();
    const auto paint = [&](double share, const QBrush& brush) {
        if (share <= 0)
            return;
        const double width = std::max(share * room.width(), narrowest);
        paintPart(painter, QRectF(left, room.top(), width, room.height()), brush);
        left += width;
    };
    paint(shares.allow, QColor(shades::table));
    paint(shares.deny, QColor(shades::text));
    paint(shares.watch, QBrush(shades::text, Qt::BDiagPattern));
}

} // namespace

void AccessBarDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QStyle& style = cell.widget == nullptr ? *QApplication::style() : *cell.widget->style();
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget);
    painter->save();
    painter->setClipRect(option.rect);
    paintBar(*painter, option.rect.adjusted(besideBar, aboveBar, -besideBar - 1, -aboveBar - 1),
        index.data(AccessModel::sharesRole).value<AccessShares>());
    painter->restore();
}

QPixmap accessBarSample(const AccessShares& shares, QSize size, qreal devicePixelRatio)
{
    QPixmap sample(size * devicePixelRatio);
    sample.setDevicePixelRatio(devicePixelRatio);
    sample.fill(Qt::transparent);
    QPainter painter(&sample);
    paintBar(painter, QRectF(0, 0, size.width() - 1, size.height() - 1), shares);
    return sample;
}

} // namespace quorvane::windows
