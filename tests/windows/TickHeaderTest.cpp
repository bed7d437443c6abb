#include "windows/TickHeader.h"

#include <QImage>
#include <QPainter>
#include <QProxyStyle>
#include <QStandardItemModel>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace quorvane::windows {

namespace {

class SortedHeader : public TickHeader {
public:
    using TickHeader::initStyleOptionForIndex;
};

// Notes the state in which a tick is drawn.
class TickNotingStyle : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override
    {
        if (element == PE_IndicatorItemViewItemCheck)
            tick = option->state;
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    mutable std::optional<State> tick;
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

TEST(TickHeader, ShowsWhetherAllSomeOrNoneAreTickedInTheMiddleOfATitle)
{
    QStandardItemModel model(1, 2);
    TickHeader header;
    header.setModel(&model);
    header.resize(200, 30);
    header.resizeSection(0, 60);
    const auto picture = [&] { return header.grab(QRect(0, 0, 60, 30)).toImage(); };
    const QImage without = picture();
    QList<QImage> seen{without};
    for (const auto state : {Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked}) {
        model.setHeaderData(0, Qt::Horizontal, static_cast<int>(state), Qt::CheckStateRole);
        const QImage image = picture();
        EXPECT_FALSE(seen.contains(image)) << state;
        seen.append(image);
        // What differs is the box.
        QRect box;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) != without.pixel(x, y))
                    box |= QRect(x, y, 1, 1);
            }
        }
        EXPECT_NEAR(box.center().x(), 30, 2) << state;
        EXPECT_NEAR(box.center().y(), 15, 2) << state;
    }
}

TEST(TickHeader, ATickIsDrawnDisabledInADisabledHeader)
{
    QStandardItemModel model(1, 1);
    model.setHeaderData(0, Qt::Horizontal, static_cast<int>(Qt::Checked), Qt::CheckStateRole);
    TickNotingStyle style;
    TickHeader header;
    header.setStyle(&style);
    header.setModel(&model);
    for (const bool isEnabled : {true, false}) {
        header.setEnabled(isEnabled);
        style.tick.reset();
        header.grab();
        ASSERT_TRUE(style.tick);
        EXPECT_EQ(style.tick->testFlag(QStyle::State_Enabled), isEnabled);
    }
}

} // namespace quorvane::windows
