#include "windows/CleanUpModel.h"

#include "tests/support/TestRules.h"
#include "tests/windows/ModelTitles.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class CleanUpModelTest : public testing::Test {
protected:
    CleanUpModelTest() { model.setCandidates({sure, doubtful}); }
    Qt::CheckState tick(int row) const
    {
        return model.index(row, CleanUpModel::rule).data(Qt::CheckStateRole).value<Qt::CheckState>();
    }
    bool setTick(int row, Qt::CheckState state)
    {
        return model.setData(model.index(row, CleanUpModel::rule), state, Qt::CheckStateRole);
    }

    const workflow::DispensableRule sure{
        test::policyRule({.path = "/a", .processName = "any", .operations = 1}),
        workflow::FindingKind::missingPath, "Path is gone."};
    const workflow::DispensableRule doubtful{
        test::policyRule({.path = "/b", .processName = "any", .operations = 1}),
        workflow::FindingKind::missingPath, "Path is gone.", "on a volume"};
    CleanUpModel model;
};

} // namespace

TEST_F(CleanUpModelTest, KeepsTheRulesOfQtForModels)
{
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
    EXPECT_EQ(model.columnCount(model.index(0, 0)), 0);
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
}

TEST_F(CleanUpModelTest, NamesItsColumnsAndShowsWholeTextsInToolTips)
{
    EXPECT_EQ(test::titlesOf(model), "Rule|Why it can go|Why it might stay|");
    EXPECT_FALSE(model.headerData(0, Qt::Vertical, Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
    EXPECT_TRUE(model.index(1, CleanUpModel::doubt)
                    .data(Qt::ToolTipRole)
                    .toString()
                    .contains(QStringLiteral(">on a volume<")));
    EXPECT_EQ(model.index(0, CleanUpModel::doubt).data(Qt::ToolTipRole).toString(), QString());
}

TEST_F(CleanUpModelTest, HasTicksInItsFirstColumnAlone)
{
    EXPECT_TRUE(model.flags(model.index(0, CleanUpModel::rule)).testFlag(Qt::ItemIsUserCheckable));
    EXPECT_FALSE(model.flags(model.index(0, CleanUpModel::reason)).testFlag(Qt::ItemIsUserCheckable));
    EXPECT_FALSE(model.index(0, CleanUpModel::reason).data(Qt::CheckStateRole).isValid());
    EXPECT_FALSE(model.setData(model.index(0, CleanUpModel::reason), Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_FALSE(model.setData(model.index(0, CleanUpModel::rule), QStringLiteral("x"), Qt::EditRole));
    EXPECT_FALSE(model.setData({}, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_EQ(tick(0), Qt::Checked);
}

TEST_F(CleanUpModelTest, TellsOfEachTickAndCountsIt)
{
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy ticks(&model, &CleanUpModel::ticksDidChange);
    EXPECT_EQ(model.tickedCount(), 1U);
    EXPECT_TRUE(setTick(1, Qt::Checked));
    EXPECT_EQ(model.tickedCount(), 2U);
    EXPECT_TRUE(setTick(1, Qt::Checked));
    EXPECT_EQ(model.tickedCount(), 2U) << "it was ticked before";
    EXPECT_TRUE(setTick(0, Qt::Unchecked));
    EXPECT_EQ(model.tickedCount(), 1U);
    ASSERT_EQ(changes.count(), 3);
    EXPECT_EQ(changes[2][0].toModelIndex(), model.index(0, CleanUpModel::rule));
    EXPECT_EQ(ticks.count(), 3);
    ASSERT_EQ(model.ticked().size(), 1U);
    EXPECT_EQ(model.ticked().front().rule, doubtful.rule);
}

TEST_F(CleanUpModelTest, TicksAllOrNoneAndTellsOfEveryRow)
{
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy ticks(&model, &CleanUpModel::ticksDidChange);
    model.setAllTicked(true);
    EXPECT_EQ(model.tickedCount(), 2U);
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex(), model.index(0, CleanUpModel::rule));
    EXPECT_EQ(changes[0][1].toModelIndex(), model.index(1, CleanUpModel::rule));
    model.setAllTicked(false);
    EXPECT_EQ(model.tickedCount(), 0U);
    EXPECT_EQ(ticks.count(), 2);

    model.setCandidates({});
    changes.clear();
    model.setAllTicked(true);
    EXPECT_EQ(changes.count(), 0) << "there is no row";
}

TEST_F(CleanUpModelTest, KeepsTicksThatAPersonChanged)
{
    setTick(0, Qt::Unchecked);
    workflow::DispensableRule nowSure = doubtful;
    nowSure.doubt.clear();
    QSignalSpy ticks(&model, &CleanUpModel::ticksDidChange);
    const QSignalSpy beginnings(&model, &QAbstractItemModel::modelAboutToBeReset);
    const QSignalSpy ends(&model, &QAbstractItemModel::modelReset);
    model.setCandidates({nowSure, sure});
    EXPECT_EQ(beginnings.count(), 1);
    EXPECT_EQ(ends.count(), 1) << "all rows are other ones";
    EXPECT_EQ(tick(0), Qt::Checked) << "no longer in doubt, and nobody touched it";
    EXPECT_EQ(tick(1), Qt::Unchecked);
    EXPECT_EQ(model.tickedCount(), 1U);
    EXPECT_EQ(ticks.count(), 1);
}

} // namespace quorvane::windows
