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
#include <memory>
#include <semaphore>

namespace quorvane::windows {

namespace {

class LoadingWindowTest : public testing::Test {
protected:
    // Runs a load that ends when `duringLoad`, which the event loop calls as soon as the window is visible,
    // says so.
    bool runUntilVisibleAnd(const std::function<bool()>& duringLoad)
    {
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, &window, [&] {
            if (!window.isVisible())
                return;
            look.stop();
            if (duringLoad())
                end->release();
        });
        look.start(1);
        return window.run([end = end] { end->acquire(); });
    }

    std::shared_ptr<std::binary_semaphore> end = std::make_shared<std::binary_semaphore>(0);
    LoadingWindow window{
        QStringLiteral("/nonexistent"), QStringLiteral("Program"), QStringLiteral("Reading…")};
};

} // namespace

TEST_F(LoadingWindowTest, AppearsDuringALongLoadAndGoesWithIt)
{
    bool wasBusy = false;
    EXPECT_TRUE(runUntilVisibleAnd([&] {
        auto* busy = window.findChild<QProgressBar*>();
        wasBusy = busy->isVisible() && busy->minimum() == busy->maximum();
        EXPECT_EQ(busy->accessibleName(), QStringLiteral("Reading…"));
        EXPECT_EQ(window.windowTitle(), QStringLiteral("Program"));
        return true;
    }));
    EXPECT_TRUE(wasBusy);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(LoadingWindowTest, IsNotSeenDuringAShortLoad)
{
    bool wasSeen = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &window, [&] { wasSeen = wasSeen || window.isVisible(); });
    look.start(0);
    const QThread* loader = QThread::currentThread();
    EXPECT_TRUE(window.run([&loader] { loader = QThread::currentThread(); }));
    EXPECT_NE(loader, QThread::currentThread());
    EXPECT_FALSE(wasSeen);
}

TEST_F(LoadingWindowTest, DoesNotWaitForTheLoadWhenTheUserQuits)
{
    EXPECT_FALSE(runUntilVisibleAnd([&] {
        QTest::mouseClick(window.buttons().buttons().front(), Qt::LeftButton);
        return false;
    }));
    EXPECT_FALSE(window.isVisible());
    end->release();
}

TEST_F(LoadingWindowTest, CountsItsClosingAsQuitting)
{
    EXPECT_FALSE(runUntilVisibleAnd([&] {
        window.close();
        return false;
    }));
    end->release();
}

TEST_F(LoadingWindowTest, IsNotLeftByAReturnKeyThatWasMeantForAnotherWindow)
{
    EXPECT_TRUE(runUntilVisibleAnd([&] {
        for (QWidget* at :
            {static_cast<QWidget*>(&window), static_cast<QWidget*>(window.buttons().buttons().front())}) {
            QTest::keyClick(at, Qt::Key_Return);
            QTest::keyClick(at, Qt::Key_Enter);
        }
        return true;
    }));
}

TEST_F(LoadingWindowTest, CanBeQuitBeforeItIsVisible)
{
    QTimer::singleShot(0, &window, &QDialog::reject);
    EXPECT_FALSE(window.run([end = end] { end->acquire(); }));
    EXPECT_FALSE(window.isVisible());
    end->release();
}

} // namespace quorvane::windows
