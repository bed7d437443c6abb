#include "tests/pictures/KeptPicture.h"

#include <QCheckBox>

namespace quorvane::test {

namespace {

class KeptPicture : public testing::Test {
protected:
    // A box with a title, as it is painted.
    static QImage boxPicture(const QString& title, bool isTicked)
    {
        QCheckBox box(title);
        box.setChecked(isTicked);
        box.resize(160, 24);
        return pictureOf(box);
    }
    static QImage filled(QSize size, QRgb color)
    {
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(color);
        return picture;
    }

    const QImage kept = boxPicture(QStringLiteral("Illuminate"), true);
};

} // namespace

TEST_F(KeptPicture, IsLikeWhatIsPaintedAgain)
{
    EXPECT_FALSE(differenceOf(kept, boxPicture(QStringLiteral("Illuminate"), true)));
}

TEST_F(KeptPicture, DiffersByOneLetter)
{
    EXPECT_TRUE(differenceOf(kept, boxPicture(QStringLiteral("Iliuminate"), true)));
}

TEST_F(KeptPicture, DiffersByATick)
{
    EXPECT_TRUE(differenceOf(kept, boxPicture(QStringLiteral("Illuminate"), false)));
}

TEST_F(KeptPicture, DiffersByOneDotThatIsAShadeAwayAndNotByRounding)
{
    const QImage band = filled({100, 100}, qRgb(0xf5, 0xf5, 0xf5));
    QImage seen = band;
    seen.setPixel(99, 99, qRgb(0xf5, 0xf1, 0xf9));
    EXPECT_FALSE(differenceOf(band, seen));
    seen.setPixel(99, 99, qRgb(0xf5, 0xf0, 0xf5));
    const auto difference = differenceOf(band, seen);
    ASSERT_TRUE(difference);
    EXPECT_EQ(difference->pixel(99, 99), qRgb(0xff, 0, 0));
    EXPECT_NE(difference->pixel(98, 99), qRgb(0xff, 0, 0));
}

TEST_F(KeptPicture, OfAnotherSizeDiffers)
{
    EXPECT_TRUE(differenceOf(filled({10, 10}, 0), filled({10, 11}, 0)));
}

TEST_F(KeptPicture, ThatIsMissingDiffers)
{
    EXPECT_TRUE(differenceOf({}, kept));
}

} // namespace quorvane::test
