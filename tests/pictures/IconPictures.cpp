#include "tests/pictures/KeptPicture.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"

#include <QDir>
#include <QIcon>
#include <QPainter>

namespace quorvane::test {

namespace {

constexpr int room = 72; // logical dots for each image, which is no larger than 64

std::vector<QIcon> allImages()
{
    std::vector<QIcon> images;
    const QDir folder(QStringLiteral(":/images"));
    for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
        if (!name.contains(QLatin1Char('@')))
            images.emplace_back(folder.filePath(name));
    }
    for (const QIcon& image :
        {windows::systemRuleImage(), windows::recentRuleImage(), windows::missingProgramImage()})
        images.push_back(image);
    return images;
}

// All images in a row, each in the size of a table, of a tool bar and of an editor.
QImage rowOfImages(QRgb background, qreal scale)
{
    const std::vector<QIcon> images = allImages();
    const QSize size(static_cast<int>(images.size()) * room, 16 + 24 + 64 + 16);
    QImage row(size * scale, QImage::Format_RGB32);
    row.setDevicePixelRatio(scale);
    row.fill(background);
    QPainter painter(&row);
    int left = 4;
    for (const QIcon& image : images) {
        image.paint(&painter, left, 4, 16, 16);
        image.paint(&painter, left, 24, 24, 24);
        image.paint(&painter, left, 52, 64, 64);
        left += room;
    }
    painter.end();
    row.setDevicePixelRatio(1);
    return row;
}

QImage rowsOnLightAndDark(qreal scale)
{
    return stacked({rowOfImages(windows::shades::table.in({}).rgb(), scale),
        rowOfImages(windows::shades::table.in({.isDark = true}).rgb(), scale)});
}

} // namespace

TEST(IconPictures, ShowAllImagesOnLightAndDark)
{
    EXPECT_TRUE(looksAsKept("icons", rowsOnLightAndDark(1)));
}

TEST(IconPictures, ShowAllImagesWithTwoDotsForOne)
{
    EXPECT_TRUE(looksAsKept("icons-two-dots", rowsOnLightAndDark(2)));
}

} // namespace quorvane::test
