#include "windows/MessageWindow.h"

#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QImage>
#include <QLabel>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

QColor middleOfIcon(const MessageWindow& window)
{
    for (const QLabel* label : window.findChildren<QLabel*>()) {
        if (!label->pixmap().isNull())
            return label->pixmap().toImage().pixelColor(24, 24);
    }
    return {};
}

const QLabel* labelWith(const MessageWindow& window, const QString& text)
{
    for (const QLabel* label : window.findChildren<QLabel*>()) {
        if (label->text() == text)
            return label;
    }
    return nullptr;
}

} // namespace

TEST(MessageWindow, HasTheIconThatIsThereElseALock)
{
    const test::TemporaryFolder folder;
    QImage red(64, 64, QImage::Format_RGB32);
    red.fill(Qt::red);
    const QString path = QString::fromStdString(folder.path("icon.png"));
    EXPECT_NE(middleOfIcon(MessageWindow(path)), QColor(Qt::red));
    EXPECT_TRUE(middleOfIcon(MessageWindow(path)).isValid()) << "there is no such file yet";
    ASSERT_TRUE(red.save(path));
    EXPECT_EQ(middleOfIcon(MessageWindow(path)), QColor(Qt::red));
}

TEST(MessageWindow, ShowsTextsAsTheyAreAndGivesThemAway)
{
    MessageWindow window({});
    window.setTexts(QStringLiteral("<i>header</i> [*]"), QStringLiteral("<b>message</b>"));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("<i>header</i> [*][*]")) << "Qt shows one of them";
    for (const char* text : {"<i>header</i> [*]", "<b>message</b>"}) {
        const QLabel* label = labelWith(window, QString::fromLatin1(text));
        ASSERT_NE(label, nullptr) << text;
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        EXPECT_TRUE(label->wordWrap());
        EXPECT_TRUE(label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    }
    EXPECT_TRUE(labelWith(window, QStringLiteral("<i>header</i> [*]"))->font().bold());
    EXPECT_FALSE(labelWith(window, QStringLiteral("<b>message</b>"))->font().bold());
}

TEST(MessageWindow, GivesNoTextAwayThatItHadToBreak)
{
    MessageWindow window({});
    window.setTexts(QStringLiteral("header"), QString(31, QLatin1Char('x')));
    const QLabel* label = labelWith(window, QString(30, QLatin1Char('x')) + QChar(0x200b) + QLatin1Char('x'));
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->textInteractionFlags(), Qt::NoTextInteraction) << "a copy would hold the break";
}

TEST(MessageWindow, IsAsLargeAsItsTextsAndEndsNoProgram)
{
    MessageWindow window({});
    window.setTexts(QStringLiteral("header"), QStringLiteral("message"));
    window.show();
    const int height = window.height();
    window.setTexts(QStringLiteral("header"), QStringLiteral("a message\nof\nmany\nlines"));
    QApplication::processEvents();
    EXPECT_GT(window.height(), height);
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
    EXPECT_FALSE(window.testAttribute(Qt::WA_QuitOnClose));
}

} // namespace quorvane::windows
