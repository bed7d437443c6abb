#include "windows/SelectableText.h"

#include "windows/Shades.h"
#include "windows/WindowLook.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class SelectableTextTest : public testing::Test {
protected:
    SelectableTextTest()
    {
        container.resize(200, 400);
        text.resize(200, 20);
        container.show();
    }
    ~SelectableTextTest() override { setAppearance(*qApp, {}); }

    QWidget container;
    SelectableText text{&container};
};

} // namespace

TEST_F(SelectableTextTest, IsAsHighAsItsTextNeedsAtItsWidth)
{
    text.setText(QStringLiteral("short"));
    const int line = text.fontMetrics().height();
    EXPECT_GE(text.height(), line);
    EXPECT_LT(text.height(), 2 * line);
    EXPECT_EQ(text.sizeHint().height(), text.height());
    EXPECT_EQ(text.sizeHint().width(), 0) << "it never makes its window wider";
    EXPECT_EQ(text.minimumSizeHint(), QSize(0, 0));

    text.setText(QString(200, QLatin1Char('x'))); // one word
    const int narrow = text.height();
    EXPECT_GT(narrow, 3 * line);
    text.resize(1000, text.height());
    EXPECT_LT(text.height(), narrow);
    text.setText({});
    EXPECT_GE(text.height(), line) << "of no text";
}

TEST_F(SelectableTextTest, CanBeCopiedButNotChanged)
{
    text.setText(QStringLiteral("<b>as it is</b>"));
    text.setFocus();
    QTest::keyClick(&text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&text, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("<b>as it is</b>"));
    QTest::keyClick(&text, Qt::Key_X);
    EXPECT_EQ(text.toPlainText(), QStringLiteral("<b>as it is</b>"));
}

TEST_F(SelectableTextTest, KeepsWhatIsSelectedWhenItIsGivenTheSameText)
{
    text.setText(QStringLiteral("a text"));
    text.selectAll();
    text.setText(QStringLiteral("a text"));
    EXPECT_EQ(text.textCursor().selectedText(), QStringLiteral("a text"));
    text.setText(QStringLiteral("another"));
    EXPECT_FALSE(text.textCursor().hasSelection());
}

TEST_F(SelectableTextTest, LeavesTabToTheNextControl)
{
    EXPECT_TRUE(text.tabChangesFocus());
    EXPECT_FALSE(text.focusPolicy() & Qt::WheelFocus & ~Qt::StrongFocus)
        << "the wheel scrolls what is around it";
}

TEST_F(SelectableTextTest, FollowsTheLookInItsShade)
{
    const auto color = [this] { return text.palette().color(QPalette::Text); };
    EXPECT_EQ(color(), QColor(shades::text));
    text.setShade(shades::failureText);
    const QColor light = color();
    EXPECT_EQ(light, QColor(shades::failureText));
    setAppearance(*qApp, {.isDark = true});
    QApplication::processEvents();
    EXPECT_EQ(color(), QColor(shades::failureText));
    EXPECT_NE(color(), light);
}

} // namespace quorvane::windows
