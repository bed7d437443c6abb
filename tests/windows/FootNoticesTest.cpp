#include "windows/FootNotices.h"
#include "windows/ElidedLabel.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class FootNoticesTest : public testing::Test {
protected:
    QString text() const { return notices.findChild<ElidedLabel*>(QStringLiteral("noticeText"))->text(); }
    QString more() const
    {
        const auto* label = notices.findChild<QLabel*>(QStringLiteral("noticeCount"));
        return label->isHidden() ? QString() : label->text();
    }
    QString buttons() const
    {
        QStringList titles;
        for (const QPushButton* button : notices.findChildren<QPushButton*>()) {
            if (!button->isHidden())
                titles.append(button->text());
        }
        return titles.join(QLatin1Char(' '));
    }
    void press(const char* title)
    {
        for (QPushButton* button : notices.findChildren<QPushButton*>()) {
            if (!button->isHidden() && button->text() == QLatin1String(title))
                return button->click();
        }
        FAIL() << "no button " << title;
    }
    void dismiss() { notices.findChild<QToolButton*>(QStringLiteral("dismissButton"))->click(); }

    FootNotices notices;
};

} // namespace

TEST_F(FootNoticesTest, TakesNoRoomWithoutANotice)
{
    EXPECT_TRUE(notices.isHidden());
    notices.add({QStringLiteral("One")});
    EXPECT_FALSE(notices.isHidden());
    dismiss();
    EXPECT_TRUE(notices.isHidden());
}

TEST_F(FootNoticesTest, ButtonsOfANoticeThatIsGoneDoNothing)
{
    int pressed = 0;
    notices.add({QStringLiteral("One"), {{QStringLiteral("Show"), [&] { ++pressed; }}}});
    dismiss();
    press("Show"); // as a screen reader may, although they are hidden
    dismiss();
    EXPECT_EQ(pressed, 0);
    EXPECT_TRUE(notices.isHidden());
}

TEST_F(FootNoticesTest, LeavesReturnToTheWindowAroundIt)
{
    QDialog dialog;
    auto* inside = new FootNotices(&dialog);
    inside->add({QStringLiteral("One"), {{QStringLiteral("Show"), [] {}}}});
    EXPECT_FALSE(inside->findChild<QPushButton*>()->autoDefault());
}

TEST_F(FootNoticesTest, IsDismissedByAButtonThatSaysSo)
{
    const auto* button = notices.findChild<QToolButton*>(QStringLiteral("dismissButton"));
    EXPECT_EQ(button->accessibleName(), QStringLiteral("Dismiss"));
    EXPECT_EQ(button->toolTip(), QStringLiteral("Dismiss this notice"));
    EXPECT_EQ(button->focusPolicy(), Qt::StrongFocus);
}

TEST_F(FootNoticesTest, KeepsItsButtonsForANoticeWithTheSame)
{
    int taken = 0;
    const auto add = [&](const char* text) {
        notices.add({.text = QString::fromLatin1(text),
            .buttons = {{QStringLiteral("Take"), [&taken] { ++taken; }}},
            .subject = QStringLiteral("subject")});
    };
    add("One");
    auto* button = notices.findChild<QPushButton*>();
    notices.remove(QStringLiteral("subject"));
    add("Two");

    EXPECT_EQ(notices.findChildren<QPushButton*>(), QList<QPushButton*>{button});
    EXPECT_FALSE(button->isHidden());
    press("Take");
    EXPECT_EQ(taken, 1);
    EXPECT_TRUE(notices.isHidden());
    notices.add({QStringLiteral("Three")});
    EXPECT_EQ(buttons(), QString());
}

TEST_F(FootNoticesTest, TheNewestStandsBeforeTheOthersWhichAreCounted)
{
    notices.add({QStringLiteral("One")});
    EXPECT_EQ(more(), QString());
    notices.add({QStringLiteral("Two")});
    notices.add({QStringLiteral("Three")});
    EXPECT_EQ(text(), QStringLiteral("Three"));
    EXPECT_EQ(more(), QStringLiteral("2 more"));
    dismiss();
    EXPECT_EQ(text(), QStringLiteral("Two"));
    EXPECT_EQ(more(), QStringLiteral("1 more"));
}

TEST_F(FootNoticesTest, AButtonActsOnceAndTakesItsNoticeAway)
{
    int shown = 0;
    notices.add({QStringLiteral("One")});
    notices.add({QStringLiteral("Two"),
        {{QStringLiteral("Show"), [&shown] { ++shown; }}, {QStringLiteral("Undo"), [] {}}}});
    EXPECT_EQ(buttons(), QStringLiteral("Show Undo"));
    press("Show");
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(text(), QStringLiteral("One"));
    EXPECT_EQ(buttons(), QString());
    EXPECT_EQ(notices.count(), 1U);
}

TEST_F(FootNoticesTest, AnActionMayBringAnotherNotice)
{
    notices.add(
        {QStringLiteral("One"), {{QStringLiteral("Go"), [this] {
                                      notices.add({QStringLiteral("Two"), {{QStringLiteral("Go"), [] {}}}});
                                  }}}});
    press("Go");
    EXPECT_EQ(text(), QStringLiteral("Two"));
    press("Go");
    EXPECT_EQ(notices.count(), 0U);
}

TEST_F(FootNoticesTest, ANoticeReplacesTheOneOfItsSubjectAndNoOther)
{
    const QString subject = QStringLiteral("merge");
    notices.add({QStringLiteral("1 rule"), {}, subject});
    notices.add({QStringLiteral("Other")});
    notices.add({QStringLiteral("2 rules"), {}, subject});
    EXPECT_EQ(notices.count(), 2U);
    EXPECT_EQ(text(), QStringLiteral("2 rules"));
    notices.remove(subject);
    EXPECT_EQ(text(), QStringLiteral("Other"));
    notices.remove(subject);
    EXPECT_EQ(notices.count(), 1U);
}

TEST_F(FootNoticesTest, IsAnAlertToScreenReadersWithTheWholeText)
{
    const QString text = QString(1000, QLatin1Char('x'));
    notices.add({text});
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&notices);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::AlertMessage);
    EXPECT_EQ(accessible->text(QAccessible::Name), text);
}

TEST_F(FootNoticesTest, ALongTextIsCutWithTheWholeAsToolTipAndMakesNoWindowWider)
{
    const int wide = 300;
    const QString longText = QString(1000, QLatin1Char('x')) + QStringLiteral(" <b> &amp; end");
    notices.add({longText});
    EXPECT_LT(notices.minimumSizeHint().width(), wide);
    const QString toolTip = notices.findChild<ElidedLabel*>()->toolTip();
    EXPECT_TRUE(toolTip.contains(QStringLiteral("&lt;b&gt; &amp;amp; end"))) << "as it is, not as markup";
}

TEST(ElidedLabel, PaintsAnEllipsisWhereTheTextDoesNotFit)
{
    ElidedLabel label;
    label.resize(120, 30);
    label.setText(QStringLiteral("fits"));
    const QImage whole = label.grab().toImage();
    label.setText(QString(200, QLatin1Char('x')));
    const QImage cut = label.grab().toImage();
    label.setText(
        label.fontMetrics().elidedText(QString(200, QLatin1Char('x')), Qt::ElideRight, label.width()));
    EXPECT_NE(whole, cut);
    EXPECT_EQ(label.grab().toImage(), cut);
}

} // namespace quorvane::windows
