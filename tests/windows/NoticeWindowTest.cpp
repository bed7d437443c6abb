#include "windows/NoticeWindow.h"
#include "app/AppDelegate.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TestRules.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace quorvane {

namespace {

NoticeWindow* shownNotice()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* notice = qobject_cast<NoticeWindow*>(window); notice != nullptr && notice->isVisible())
            return notice;
    }
    return nullptr;
}

QStringList textsOf(const QWidget& window)
{
    QStringList texts;
    for (const QLabel* label : window.findChildren<QLabel*>())
        texts.append(label->text());
    return texts;
}

} // namespace

TEST(NoticeWindow, GoesAwayWithItsButton)
{
    const QPointer<NoticeWindow> notice = new NoticeWindow(
        QStringLiteral("Header"), QStringLiteral("<b>plain</b>"), QStringLiteral("/nonexistent"));
    notice->show();
    EXPECT_TRUE(textsOf(*notice).contains(QStringLiteral("<b>plain</b>")));
    QTest::mouseClick(notice->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor([&] { return notice.isNull(); }));
}

TEST(AppDelegate, TellsOfAConfigurationThatFailedToLoadAndShowsTheWindowAllTheSame)
{
    // given a store whose last reading failed
    CapturedLog log;
    const Locations locations("/nonexistent", "nobody");
    RuleManager store(locations, log.log());
    store.setLastErrorMessage("Failed to open file '/x' for reading: Permission denied (13)");
    QWidget window;

    // when the application starts
    AppDelegate delegate(locations, log.log());
    delegate.applicationDidFinishLaunching(store, window);

    // then there is a line, a notice and the window
    EXPECT_EQ(log.lines(), std::vector<std::string>{"error on load: " + *store.lastErrorMessage()});
    NoticeWindow* notice = shownNotice();
    ASSERT_NE(notice, nullptr);
    EXPECT_EQ(notice->windowTitle(), QStringLiteral("Error Loading Configuration"));
    EXPECT_TRUE(textsOf(*notice).contains(QString::fromStdString(*store.lastErrorMessage())));
    EXPECT_TRUE(window.isVisible());
    delete notice;
}

TEST(AppDelegate, SaysNothingOfAConfigurationThatLoaded)
{
    CapturedLog log;
    const Locations locations("/nonexistent", "nobody");
    const RuleManager store(locations, log.log());
    QWidget window;
    AppDelegate delegate(locations, log.log());
    delegate.applicationDidFinishLaunching(store, window);
    EXPECT_EQ(shownNotice(), nullptr);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(window.isVisible());
}

TEST(AppDelegate, WaitsForTheAnswerToANoticeWhenAsked)
{
    CapturedLog log;
    AppDelegate delegate(Locations("/nonexistent", "nobody"), log.log());
    bool answered = false;
    QTimer::singleShot(0, [&] {
        answered = true;
        shownNotice()->close();
    });
    delegate.displayNotice("Header", "Message", true);
    EXPECT_TRUE(answered);
    EXPECT_EQ(shownNotice(), nullptr);
}

TEST(AppDelegate, ReadsTheTextsOfANoticeAsMacOsRoman)
{
    CapturedLog log;
    AppDelegate delegate(Locations("/nonexistent", "nobody"), log.log());
    delegate.displayNotice("\xC3\xA9", "plain", false);
    NoticeWindow* notice = shownNotice();
    ASSERT_NE(notice, nullptr);
    EXPECT_EQ(notice->windowTitle(), QString::fromUtf8("\xE2\x88\x9A\xC2\xA9"));
    delete notice;
}

} // namespace quorvane
