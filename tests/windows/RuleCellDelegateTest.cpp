#include "windows/RuleCellDelegate.h"
#include "windows/Shades.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStandardItemModel>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(RuleCellDelegate, ASelectedCellKeepsTheColoursOfItsIconAndItsText)
{
    const QColor color(200, 100, 50);
    QPixmap icon(16, 16);
    icon.fill(color);
    QStandardItemModel model;
    auto* item = new QStandardItem(QIcon(icon), QStringLiteral("\u2588\u2588"));
    item->setForeground(QColor(shades::red));
    item->setBackground(QColor(shades::band));
    model.appendRow(item);
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 200, 24);
    option.decorationSize = QSize(16, 16);
    option.state = QStyle::State_Enabled | QStyle::State_Active | QStyle::State_Selected;
    option.showDecorationSelected = true;
    option.palette = QApplication::palette();
    QImage image(200, 24, QImage::Format_RGB32);
    QPainter painter(&image);
    RuleCellDelegate().paint(&painter, option, model.index(0, 0));
    painter.end();
    const auto count = [&image](const QColor& sought) {
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                pixels += image.pixelColor(x, y) == sought ? 1 : 0;
        return pixels;
    };
    EXPECT_EQ(count(color), 16 * 16);
    EXPECT_GT(count(shades::red), 20);
    EXPECT_GT(count(shades::selection), 1000);
    EXPECT_EQ(count(shades::band), 0);
}

} // namespace quorvane::windows
