#include "windows/WindowLook.h"
#include "windows/RuleCellDelegate.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"
#include "windows/TickHeader.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QStandardItemModel>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace quorvane {

namespace {

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

class SortedHeader : public TickHeader {
public:
    using TickHeader::initStyleOptionForIndex;
};

// Of all rows of the image that are not blank, the number of pixels that are not.
std::vector<int> widthsOfRows(const QImage& image)
{
    std::vector<int> widths;
    for (int y = 0; y < image.height(); ++y) {
        int width = 0;
        for (int x = 0; x < image.width(); ++x)
            width += qAlpha(image.pixel(x, y)) > 0x80 ? 1 : 0;
        if (width > 0)
            widths.push_back(width);
    }
    return widths;
}

} // namespace

TEST(Shades, EveryTextStandsOutFromEveryBackgroundOfTheTable)
{
    for (const QColor& text : {shades::text, shades::faintText, shades::failureText, shades::black,
             shades::red, shades::orange, shades::blue, shades::grey}) {
        for (const QColor& background :
            {shades::table, shades::band, shades::selection, shades::window, shades::button, shades::sheet})
            EXPECT_GE(contrast(text, background), 4.5)
                << text.name().toStdString() << " on " << background.name().toStdString();
    }
}

TEST(Shades, WhatCameWentAndChangedStandsOutFromItsBackground)
{
    const std::vector<QColor> backgrounds{
        shades::table, shades::selection, shades::addedBand, shades::removedBand, shades::changedBand};
    for (const QColor& text : {shades::text, shades::added, shades::removed, shades::changed}) {
        for (const QColor& background : backgrounds)
            EXPECT_GE(contrast(text, background), 4.5)
                << text.name().toStdString() << " on " << background.name().toStdString();
    }
}

TEST(Shades, RedOrangeAndBlueArePlainlyThose)
{
    EXPECT_EQ(shades::red.hsvHue(), 0);
    EXPECT_NEAR(shades::orange.hsvHue(), 24, 6);
    EXPECT_EQ(shades::blue.hsvHue(), 240);
    for (const QColor& color : {shades::red, shades::orange, shades::blue})
        EXPECT_GT(color.hsvSaturationF(), 0.95F);
}

TEST(WindowLook, TextsOfThePaletteAreShadesOfTheTable)
{
    const QPalette look = QApplication::palette();
    EXPECT_EQ(look.color(QPalette::PlaceholderText), shades::faintText);
    EXPECT_EQ(look.color(QPalette::Highlight), shades::selection);
    EXPECT_EQ(look.color(QPalette::Disabled, QPalette::Text), shades::faintText);
}

TEST(WindowLook, ButtonsBearTheIconsOfTheThemeOrNone)
{
    QDialogButtonBox box(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Yes
        | QDialogButtonBox::No | QDialogButtonBox::Open | QDialogButtonBox::Save);
    for (const QAbstractButton* button : box.buttons())
        EXPECT_TRUE(button->icon().isNull() || !button->icon().name().isEmpty())
            << button->text().toStdString();
}

TEST(TickHeader, AnAscendingOrderPointsUp)
{
    QStandardItemModel model(1, 2);
    SortedHeader header;
    header.setModel(&model);
    header.setSortIndicatorShown(true);
    for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
        header.setSortIndicator(1, order);
        QStyleOptionHeader option;
        option.initFrom(&header);
        option.rect = QRect(0, 0, 16, 16);
        header.initStyleOptionForIndex(&option, 0);
        EXPECT_EQ(option.sortIndicator, QStyleOptionHeader::None) << "of another column";
        header.initStyleOptionForIndex(&option, 1);
        QImage image(16, 16, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        header.style()->drawPrimitive(QStyle::PE_IndicatorHeaderArrow, &option, &painter, &header);
        painter.end();
        const std::vector<int> widths = widthsOfRows(image);
        ASSERT_GE(widths.size(), 2U);
        EXPECT_EQ(widths.front() < widths.back(), order == Qt::AscendingOrder);
    }
}

TEST(RuleCellDelegate, ASelectedCellKeepsTheColoursOfItsIconAndItsText)
{
    const QColor color(200, 100, 50);
    QPixmap icon(16, 16);
    icon.fill(color);
    QStandardItemModel model;
    auto* item = new QStandardItem(QIcon(icon), QStringLiteral("\u2588\u2588"));
    item->setForeground(shades::red);
    item->setBackground(shades::band);
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

} // namespace quorvane
