#include "windows/AccessBars.h"

#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(AccessBars, TellAllowDenyAndWatchApartWithoutColours)
{
    const QSize size(12, 12);
    const auto darkPixels = [&](const AccessShares& shares) {
        const QImage image = accessBarSample(shares, size, 1).toImage();
        int dark = 0;
        for (int y = 1; y < 10; ++y)
            for (int x = 1; x < 10; ++x)
                dark += qGray(image.pixel(x, y)) < 128 && qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
        return dark;
    };
    const int allow = darkPixels({.allow = 1});
    const int watch = darkPixels({.watch = 1});
    const int deny = darkPixels({.deny = 1});
    EXPECT_LT(allow + 5, watch);
    EXPECT_LT(watch + 5, deny);
}

TEST(AccessBars, ShowHoweverSmallAShareIs)
{
    const QImage image = accessBarSample({.allow = 1e-9, .deny = 1e-9}, QSize(40, 12), 1).toImage();
    EXPECT_EQ(qAlpha(image.pixel(5, 5)), 255);
    EXPECT_EQ(qAlpha(image.pixel(20, 5)), 0);
}

} // namespace quorvane::windows
