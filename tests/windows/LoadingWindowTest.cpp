#include "windows/LoadingWindow.h"

#include <QDialogButtonBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <semaphore>

namespace quorvane::windows {

namespace {

class LoadingWindowTest : public testing::Test {
protected:
    // Runs a load that ends when `duringLoad`, which the event loop calls as soon as the window is visible,
    // has returned.
    void runUntilVisibleAnd(const std::function<void()>& duringLoad)
    {
        std::binary_semaphore end{0};
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, &window, [&] {
            if (!window.isVisible())
                return;
            look.stop();
            duringLoad();
            end.release();
        });
        look.start(1);
        window.run([&end] { end.acquire(); });
    }

    LoadingWindow window{
        QStringLiteral("/nonexistent"), QStringLiteral("Program"), QStringLiteral("Reading…")};
};

} // namespace

TEST_F(LoadingWindowTest, AppearsDuringALongLoadAndGoesWithIt)
{
    bool wasBusy = false;
    runUntilVisibleAnd([&] {
        auto* busy = window.findChild<QProgressBar*>();
        wasBusy = busy->isVisible() && busy->minimum() == busy->maximum();
        EXPECT_EQ(busy->accessibleName(), QStringLiteral("Reading…"));
        EXPECT_EQ(window.windowTitle(), QStringLiteral("Program"));
    });
    EXPECT_TRUE(wasBusy);
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(window.hasQuit());
}

TEST_F(LoadingWindowTest, IsNotSeenDuringAShortLoad)
{
    bool wasSeen = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &window, [&] { wasSeen = wasSeen || window.isVisible(); });
    look.start(0);
    const QThread* loader = QThread::currentThread();
    window.run([&loader] { loader = QThread::currentThread(); });
    EXPECT_NE(loader, QThread::currentThread());
    EXPECT_FALSE(wasSeen);
}

TEST_F(LoadingWindowTest, WaitsForTheLoadOutOfSightWhenTheUserQuits)
{
    bool isVisibleAfterwards = true;
    runUntilVisibleAnd([&] {
        const auto buttons = window.buttons().buttons();
        ASSERT_EQ(buttons.size(), 1);
        QTest::mouseClick(buttons.front(), Qt::LeftButton);
        isVisibleAfterwards = window.isVisible();
    });
    EXPECT_FALSE(isVisibleAfterwards);
    EXPECT_TRUE(window.hasQuit());
}

TEST_F(LoadingWindowTest, CountsItsClosingAsQuitting)
{
    runUntilVisibleAnd([&] { window.close(); });
    EXPECT_TRUE(window.hasQuit());
}

TEST_F(LoadingWindowTest, StaysAwayWhenTheUserHasQuitBefore)
{
    window.reject();
    bool wasSeen = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &window, [&] { wasSeen = wasSeen || window.isVisible(); });
    look.start(1);
    constexpr unsigned longLoad = 500; // milliseconds
    window.run([] { QThread::msleep(longLoad); });
    EXPECT_FALSE(wasSeen);
}

} // namespace quorvane::windows
