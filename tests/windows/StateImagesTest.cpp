#include "windows/StateImages.h"

#include <QIcon>
#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvane::windows {

namespace {

int strongest(const QIcon& icon, int size, qreal scale)
{
    const QImage image = icon.pixmap(QSize(size, size), scale).toImage();
    EXPECT_EQ(image.size(), QSize(size, size) * scale);
    int strength = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            strength = std::max(strength, qAlpha(image.pixel(x, y)));
    }
    return strength;
}

} // namespace

TEST(StateImages, AreFaintAtEveryScaleOfAScreen)
{
    for (const qreal scale : {1.0, 2.0, 3.0}) {
        for (const QIcon* mark : {&systemRuleImage(), &recentRuleImage()})
            EXPECT_NEAR(strongest(*mark, stateImageSize, scale), 0.8 * 255, 3) << scale;
        EXPECT_NEAR(strongest(missingProgramImage(), 16, scale), 0.5 * 255, 3) << scale;
    }
}

} // namespace quorvane::windows
