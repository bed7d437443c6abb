#include "windows/BackgroundThread.h"

#include <QApplication>
#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorvane::windows {

TEST(BackgroundThread, WorksOnAnotherThreadAndAnswersOnThisOne)
{
    BackgroundThread background;
    QThread* worker = nullptr;
    QThread* answered = nullptr;
    background.run([&] { worker = QThread::currentThread(); }, [&] { answered = QThread::currentThread(); });
    EXPECT_EQ(answered, nullptr) << "not before the caller returns to its events";
    EXPECT_TRUE(QTest::qWaitFor([&] { return answered != nullptr; }));
    EXPECT_EQ(answered, QThread::currentThread());
    EXPECT_NE(worker, QThread::currentThread());
    EXPECT_NE(worker, nullptr);
}

TEST(BackgroundThread, DoesOneThingAfterTheOther)
{
    BackgroundThread background;
    std::string order; // written by one thread at a time
    QSemaphore mayBegin;
    background.run(
        [&] {
            mayBegin.acquire();
            order += "1";
        },
        [] {});
    background.run([&] { order += "2"; }, [] {});
    background.run([&] { order += "3"; }, [] {});
    mayBegin.release();
    background.wait();
    EXPECT_EQ(order, "123");
}

TEST(BackgroundThread, WaitsForWorkThatAnAnswerAsksFor)
{
    BackgroundThread background;
    std::string order;
    background.run([&] { order += "work "; },
        [&] {
            order += "answer ";
            background.run([&] { order += "more "; }, [&] { order += "end"; });
        });
    background.wait();
    EXPECT_EQ(order, "work answer more end");
    background.wait(); // with nothing to wait for
}

TEST(BackgroundThread, DropsAnswersWhenItEndsButNoWorkUnderWay)
{
    bool isDone = false;
    bool isAnswered = false;
    {
        BackgroundThread background;
        QSemaphore hasBegun;
        background.run(
            [&] {
                hasBegun.release();
                isDone = true;
            },
            [&] { isAnswered = true; });
        hasBegun.acquire();
    }
    QApplication::processEvents();
    EXPECT_TRUE(isDone);
    EXPECT_FALSE(isAnswered);
}

} // namespace quorvane::windows
