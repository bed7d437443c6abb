#include "windows/WindowLook.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string_view>

namespace quorvane::windows {

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

// What a widget is told.
class Events : public QObject {
public:
    explicit Events(QWidget& widget) { widget.installEventFilter(this); }
    bool contain(QEvent::Type type) const { return m_types.contains(type); }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        m_types.append(event->type());
        return false;
    }

private:
    QList<QEvent::Type> m_types;
};

} // namespace

class Looks : public testing::TestWithParam<platform::Appearance> {
protected:
    // Every text has the contrast that the look promises on every background.
    static void expectContrast(std::initializer_list<Shade> texts, std::initializer_list<Shade> backgrounds)
    {
        const double least = GetParam().hasHighContrast ? 7.0 : 4.5;
        for (const Shade& text : texts) {
            for (const Shade& background : backgrounds) {
                const QColor textColor = text.in(GetParam());
                const QColor backgroundColor = background.in(GetParam());
                EXPECT_GE(contrast(textColor, backgroundColor), least)
                    << textColor.name().toStdString() << " on " << backgroundColor.name().toStdString();
            }
        }
    }
};

TEST_P(Looks, EveryTextStandsOutFromEveryBackgroundOfTheTable)
{
    expectContrast({shades::text, shades::faintText, shades::failureText, shades::black, shades::red,
                       shades::orange, shades::blue, shades::grey},
        {shades::table, shades::band, shades::selection, shades::window, shades::button, shades::sheet});
}

TEST_P(Looks, WhatCameWentAndChangedStandsOutFromItsBackground)
{
    expectContrast({shades::text, shades::added, shades::removed, shades::changed},
        {shades::table, shades::selection, shades::addedBand, shades::removedBand, shades::changedBand});
}

TEST_P(Looks, NoticesCanBeRead)
{
    expectContrast({shades::text}, {shades::notice});
}

TEST_P(Looks, ThePlaceholderOfAMissingProgramCanBeSeenAndIsFainterThanAProgram)
{
    const QColor background = shades::table.in(GetParam());
    const auto contrastOf = [&](const QIcon& icon) {
        QImage image(16, 16, QImage::Format_RGB32);
        image.fill(background);
        QPainter painter(&image);
        icon.paint(&painter, image.rect());
        painter.end();
        constexpr QPoint besideTheSign(3, 12);
        return contrast(image.pixelColor(besideTheSign), background);
    };
    const double ofThePlaceholder = contrastOf(missingProgramImage());
    EXPECT_GE(ofThePlaceholder, 1.4);
    EXPECT_LT(ofThePlaceholder, contrastOf(QIcon(QStringLiteral(":/images/tool.svg"))));
}

TEST_P(Looks, AreTakenByThePaletteAndTheCellsOfOpenWindows)
{
    QMainWindow window;
    auto* foot = new QWidget(&window);
    QLabel label(foot);
    setTextShade(label, shades::failureText);
    window.setCentralWidget(foot);
    window.show();
    QApplication::processEvents();
    setAppearance(*qApp, GetParam());
    QApplication::processEvents();
    EXPECT_EQ(QColor(shades::red), shades::red.in(GetParam()));
    EXPECT_EQ(QApplication::palette().color(QPalette::Base), shades::table.in(GetParam()));
    EXPECT_EQ(label.palette().color(QPalette::Base), shades::table.in(GetParam()));
    EXPECT_EQ(label.palette().color(QPalette::WindowText), shades::failureText.in(GetParam()));
    QDialog sheet;
    applySheetLook(sheet);
    EXPECT_EQ(sheet.palette().color(QPalette::Base), shades::table.in({}));
    setAppearance(*qApp, {});
    QApplication::processEvents();
    EXPECT_EQ(label.palette().color(QPalette::WindowText), shades::failureText.in({}));
}

INSTANTIATE_TEST_SUITE_P(Shades, Looks,
    testing::Values(platform::Appearance{}, platform::Appearance{.isDark = true},
        platform::Appearance{.hasHighContrast = true},
        platform::Appearance{.isDark = true, .hasHighContrast = true}));

TEST(Shades, RedOrangeAndBlueArePlainlyThose)
{
    const platform::Appearance light;
    EXPECT_EQ(shades::red.in(light).hsvHue(), 0);
    EXPECT_NEAR(shades::orange.in(light).hsvHue(), 24, 6);
    EXPECT_EQ(shades::blue.in(light).hsvHue(), 240);
    for (const Shade& shade : {shades::red, shades::orange, shades::blue})
        EXPECT_GT(shade.in(light).hsvSaturationF(), 0.95F);
}

TEST(WindowLook, TextsOfThePaletteAreShadesOfTheTable)
{
    const QPalette look = QApplication::palette();
    EXPECT_EQ(look.color(QPalette::PlaceholderText), shades::faintText);
    EXPECT_EQ(look.color(QPalette::Highlight), shades::selection);
    EXPECT_EQ(look.color(QPalette::Disabled, QPalette::Text), shades::faintText);
}

TEST(WindowLook, FieldsHaveAnOutlineThatIsSeenInHighContrast)
{
    setAppearance(*qApp, {.isDark = true, .hasHighContrast = true});
    QLineEdit field;
    field.resize(100, 30);
    const QImage picture = field.grab().toImage();
    setAppearance(*qApp, {});
    EXPECT_EQ(picture.pixelColor(50, 0), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(50, 4), QColor(Qt::black));
}

TEST(WindowLook, OutlinesInHighContrastHaveTheColourOfTheTextWhateverThePen)
{
    setAppearance(*qApp, {.isDark = true, .hasHighContrast = true});
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 16, 16);
    option.state = QStyle::State_Enabled | QStyle::State_Off;
    option.palette = QApplication::palette();
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    painter.setPen(Qt::red); // as of the cell that was painted before
    QApplication::style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &option, &painter);
    EXPECT_EQ(painter.pen().color(), QColor(Qt::red)) << "given back";
    painter.end();
    setAppearance(*qApp, {});
    for (const QPoint place : {QPoint(8, 0), QPoint(0, 8), QPoint(15, 8), QPoint(8, 15)})
        EXPECT_EQ(picture.pixelColor(place), QColor(Qt::white)) << place.x() << " " << place.y();
}

TEST(WindowLook, BringsAWindowToTheFrontThatIsHiddenOrMinimisedOrBehindAnother)
{
    QWidget window;
    for (const char* before : {"hidden", "minimised", "behind"}) {
        if (before == std::string_view("minimised"))
            window.showMinimized();
        QWidget other;
        other.show();
        other.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
        const Events events(window);
        bringToFront(window);
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window)) << before;
        EXPECT_TRUE(window.isVisible()) << before;
        EXPECT_FALSE(window.isMinimized()) << before;
        EXPECT_TRUE(events.contain(QEvent::ZOrderChange)) << before;
    }
}

TEST(WindowLook, NothingMovesByItself)
{
    EXPECT_EQ(QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration), 0);
}

TEST(WindowLook, ButtonsBearTheIconsOfTheThemeOrNone)
{
    QDialogButtonBox box(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Yes
        | QDialogButtonBox::No | QDialogButtonBox::Open | QDialogButtonBox::Save);
    for (const QAbstractButton* button : box.buttons())
        EXPECT_TRUE(button->icon().isNull() || !button->icon().name().isEmpty())
            << button->text().toStdString();
}

} // namespace quorvane::windows
