#include "windows/SlowWork.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(SlowWork, IsToldOfOnceItHasTakenSomeTimeAndUntilItEnds)
{
    SlowWork work;
    QSignalSpy changes(&work, &SlowWork::slownessDidChange);
    work.setWorking(true);
    work.setWorking(true);
    EXPECT_FALSE(work.isSlow());
    ASSERT_TRUE(changes.wait());
    EXPECT_TRUE(work.isSlow());
    work.setWorking(true);
    EXPECT_EQ(changes.count(), 1);
    work.setWorking(false);
    EXPECT_FALSE(work.isSlow());
    EXPECT_EQ(changes.count(), 2);
}

TEST(SlowWork, ThatEndsSoonIsNotToldOf)
{
    SlowWork work;
    QSignalSpy changes(&work, &SlowWork::slownessDidChange);
    work.setWorking(true);
    work.setWorking(false);
    SlowWork other;
    other.setWorking(true);
    ASSERT_TRUE(QTest::qWaitFor([&other] { return other.isSlow(); }));
    EXPECT_EQ(changes.count(), 0);
}

} // namespace quorvane::windows
