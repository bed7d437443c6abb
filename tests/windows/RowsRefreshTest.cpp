#include "windows/RowsRefresh.h"

#include "tests/support/LaterWork.h"
#include "tests/support/TestRules.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::windows {

namespace {

class RowsRefreshTest : public testing::Test {
protected:
    RowsRefreshTest()
    {
        for (int number = 0; number < 21'000; ++number)
            store.addPolicyRule(
                test::policyRule({.path = "/" + std::to_string(number % 7) + "-" + std::to_string(number),
                    .processName = "/bin/sh"}));
        store.totalRules(true);
    }

    void beginSearch()
    {
        store.applyFilterWithString("/3");
        EXPECT_TRUE(refresh.start());
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
    beginSearch();
    EXPECT_TRUE(refresh.isWorking());
    EXPECT_TRUE(refresh.isSearch());

    thread.wait();

    EXPECT_EQ(done.count(), 1);
    EXPECT_FALSE(refresh.isWorking());
    EXPECT_EQ(store.totalRules(true), 3000U);
    EXPECT_FALSE(refresh.start());
}

TEST_F(RowsRefreshTest, IsNeededWhenThousandsOfRulesHaveComeIntoSortedOnes)
{
    const auto add = [this](int rules) {
        for (; rules > 0; --rules)
            store.addPolicyRule(
                test::policyRule({.path = "/new-" + std::to_string(rules), .processName = "/bin/ls"}));
    };
    add(3000);
    EXPECT_FALSE(refresh.start()) << "stored order needs no sorting";
    store.sortIndexUsingDescriptors({{rules::SortKey::path}});
    ASSERT_TRUE(refresh.start());
    thread.wait();
    add(1000);
    EXPECT_FALSE(refresh.start());
    store.totalRules(true);
    add(2001);
    ASSERT_TRUE(refresh.start());
    thread.wait();
    EXPECT_EQ(store.totalRules(true), 27'001U);
}

TEST_F(RowsRefreshTest, IsNeededWhenThousandsOfRulesHaveComeThatMayContainTheText)
{
    beginSearch();
    thread.wait();
    for (int rules = 0; rules < 2001; ++rules)
        store.addPolicyRule(
            test::policyRule({.path = "/3-new-" + std::to_string(rules), .processName = "/bin/ls"}));
    ASSERT_TRUE(refresh.start());
    EXPECT_FALSE(refresh.isSearch()) << "the text is the same";
    thread.wait();
    EXPECT_EQ(store.totalRules(true), 5001U);
}

// Changed rules get new numbers. When most numbers belong to none, all rules get new ones and are sorted
// again.
TEST_F(RowsRefreshTest, IsNeededForSortedRulesWhoseNumbersAreUsedUp)
{
    store.sortIndexUsingDescriptors({{rules::SortKey::tag}, {rules::SortKey::path}});
    ASSERT_TRUE(refresh.start());
    thread.wait();
    const std::vector<rules::RuleRef> rules = store.userRules();
    constexpr std::size_t changedAtOnce = 2000; // so few are quickly put in their places
    std::size_t changed = 0;
    for (int change = 0; change < 100 && !refresh.isWorking(); ++change) {
        store.totalRules(true);
        for (const std::size_t end = changed + changedAtOnce; changed < end; ++changed)
            std::get<rules::PolicyRulePtr>(rules[changed % rules.size()])->setTag("changed");
        store.rebuildRulesCache();
        refresh.start();
    }
    EXPECT_TRUE(refresh.isWorking());

    thread.wait();

    EXPECT_FALSE(refresh.start());
    const auto keyOf = [this](std::size_t row) {
        const rules::PolicyRule& rule = *policyRuleIn(store.ruleAtIndex(row, true));
        return std::string(rule.tag().view()) + " " + std::string(rule.path().view());
    };
    for (std::size_t row = 1; row < store.totalRules(true); ++row)
        ASSERT_LT(keyOf(row - 1), keyOf(row));
}

TEST_F(RowsRefreshTest, OvertakenEndsOnceWithTheLast)
{
    beginSearch();
    store.sortIndexUsingDescriptors({{rules::SortKey::path, false}});
    ASSERT_TRUE(refresh.start());

    thread.wait();

    EXPECT_EQ(done.count(), 1);
    EXPECT_EQ(store.totalRules(true), 3000U);
}

TEST_F(RowsRefreshTest, IsASortWhenTheTextIsThatOfTheRows)
{
    beginSearch();
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
    beginSearch();
    EXPECT_FALSE(refresh.isSlow());
    ASSERT_TRUE(slowness.wait());
    EXPECT_TRUE(refresh.isSlow());

    thread.wait();

    EXPECT_EQ(slowness.count(), 2);
    EXPECT_FALSE(refresh.isSlow());
}

TEST_F(RowsRefreshTest, OfAShortWorkReportsNoSlowness)
{
    beginSearch();
    thread.wait();
    EXPECT_EQ(slowness.count(), 0);
}

} // namespace quorvane::windows
