#include "windows/NoticeWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <chrono>

namespace quorvane::windows {

namespace {

QPointer<NoticeWindow> plainNotice()
{
    QPointer<NoticeWindow> notice = new NoticeWindow(
        QStringLiteral("Header"), QStringLiteral("<b>plain</b>"), QStringLiteral("/nonexistent"));
    notice->show();
    return notice;
}

} // namespace

TEST(NoticeWindow, GoesAwayWithItsButton)
{
    const QPointer<NoticeWindow> notice = plainNotice();
    QStringList texts;
    for (const QLabel* label : notice->findChildren<QLabel*>()) {
        texts.append(label->text());
        EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText) << "it would be markup";
    }
    EXPECT_TRUE(texts.contains(QStringLiteral("<b>plain</b>")));
    QTest::mouseClick(notice->buttons().button(QDialogButtonBox::Ok), Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor([&] { return notice.isNull(); }));
}

TEST(NoticeWindow, GoesAwayByItselfAfterAMinute)
{
    const QPointer<NoticeWindow> notice = plainNotice();
    auto* timer = notice->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->intervalAsDuration(), std::chrono::minutes(1));
    timer->start(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return notice.isNull(); }));
}

TEST(NoticeWindow, StaysUsableWhileADialogClosesOtherWindowsToInput)
{
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    const QPointer<NoticeWindow> notice = plainNotice();
    QTest::mouseClick(notice->windowHandle(), Qt::LeftButton, {}, [&] {
        QWidget* button = notice->buttons().button(QDialogButtonBox::Ok);
        return button->mapTo(notice.data(), button->rect().center());
    }());
    EXPECT_TRUE(QTest::qWaitFor([&] { return notice.isNull(); }));
}

TEST(NoticeWindow, WrapsTextWithoutBreakPoints)
{
    NoticeWindow notice(
        QStringLiteral("[*]"), QString(2000, QLatin1Char('x')), QStringLiteral("/nonexistent"));
    notice.setAttribute(Qt::WA_DeleteOnClose, false);
    notice.show();
    EXPECT_LT(notice.width(), 700);
    EXPECT_EQ(notice.windowHandle()->title(), QStringLiteral("[*]"));
}

} // namespace quorvane::windows
