#include "windows/RowsRefresh.h"

#include "tests/support/LaterWork.h"
#include "tests/support/TestRules.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class RowsRefreshTest : public testing::Test {
protected:
    RowsRefreshTest()
    {
        for (int number = 0; number < 21'000; ++number)
            store.addPolicyRule(
                test::policyRule({.path = "/" + std::to_string(number % 7), .processName = "/bin/sh"}));
        store.totalRules(true);
    }

    rules::RuleManager store{platform::Locations("/root", "ann"), test::silentLog()};
    test::LaterWork thread;
    RowsRefresh refresh{store, thread};
    QSignalSpy done{&refresh, &RowsRefresh::done};
    QSignalSpy slowness{&refresh, &RowsRefresh::slownessDidChange};
};

} // namespace

TEST_F(RowsRefreshTest, IsNotNeededForRowsThatAreUpToDateOrQuicklyMade)
{
    EXPECT_FALSE(refresh.start());
    store.addWatchRule(test::watchRule({.path = "/w", .processName = "any"}));
    EXPECT_FALSE(refresh.start());
    EXPECT_FALSE(refresh.isWorking());
}

TEST_F(RowsRefreshTest, EndsWithTheRowsInTheStore)
{
    store.applyFilterWithString("/3");
    ASSERT_TRUE(refresh.start());
    EXPECT_TRUE(refresh.isWorking());
    EXPECT_TRUE(refresh.isSearch());

    thread.wait();

    EXPECT_EQ(done.count(), 1);
    EXPECT_FALSE(refresh.isWorking());
    EXPECT_EQ(store.totalRules(true), 3000U);
    EXPECT_FALSE(refresh.start());
}

TEST_F(RowsRefreshTest, OvertakenEndsOnceWithTheLast)
{
    store.applyFilterWithString("/3");
    ASSERT_TRUE(refresh.start());
    store.sortIndexUsingDescriptors({{rules::SortKey::path, false}});
    ASSERT_TRUE(refresh.start());

    thread.wait();

    EXPECT_EQ(done.count(), 1);
    EXPECT_EQ(store.totalRules(true), 3000U);
}

TEST_F(RowsRefreshTest, IsASortWhenTheTextIsThatOfTheRows)
{
    store.applyFilterWithString("/3");
    ASSERT_TRUE(refresh.start());
    thread.wait();

    store.applyFilterWithString("");
    EXPECT_FALSE(refresh.start());
    store.sortIndexUsingDescriptors({{rules::SortKey::path, false}});
    ASSERT_TRUE(refresh.start());
    EXPECT_FALSE(refresh.isSearch());
    thread.wait();
}

TEST_F(RowsRefreshTest, ReportsThatItIsSlowAndThatItNoLongerIs)
{
    store.applyFilterWithString("/3");
    ASSERT_TRUE(refresh.start());
    EXPECT_FALSE(refresh.isSlow());
    ASSERT_TRUE(slowness.wait());
    EXPECT_TRUE(refresh.isSlow());

    thread.wait();

    EXPECT_EQ(slowness.count(), 2);
    EXPECT_FALSE(refresh.isSlow());
}

TEST_F(RowsRefreshTest, OfAShortWorkReportsNoSlowness)
{
    store.applyFilterWithString("/3");
    ASSERT_TRUE(refresh.start());
    thread.wait();
    EXPECT_EQ(slowness.count(), 0);
}

} // namespace quorvane::windows
