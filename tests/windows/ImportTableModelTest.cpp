#include "windows/ImportTableModel.h"
#include "rules/ListedRows.h"
#include "tests/support/TestRules.h"
#include "windows/RulesTableModel.h"
#include "workflow/ImportCells.h"
#include "workflow/ImportForesight.h"

#include <QAbstractItemModelTester>
#include <QBrush>
#include <QFont>
#include <QIcon>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class ImportTableModelTest : public testing::Test {
protected:
    ImportTableModelTest()
    {
        reviewed.addWatchRule(test::watchRule({.path = "/usr", .processName = "/bin/a", .sequence = 5}));
        reviewed.addPolicyRule(
            test::policyRule({.path = "/b", .processName = "/bin/b", .operations = 1, .sequence = 3}));
        reviewed.addPolicyRule(
            test::policyRule({.path = "/c", .processName = "/bin/c", .operations = 1, .sequence = 4}));
        present.addPolicyRule(test::policyRule({.path = "/c", .processName = "/bin/c", .operations = 1}));
        model.reload(reviewed);
    }
    QVariant data(int row, workflow::ImportColumn column, int role = Qt::DisplayRole) const
    {
        return model.data(model.index(row, static_cast<int>(column)), role);
    }
    QVariant tickHeader(int role) const
    {
        return model.headerData(static_cast<int>(workflow::ImportColumn::tick), Qt::Horizontal, role);
    }

    rules::RuleManager reviewed{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    rules::RuleManager present{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    workflow::StateDict ticks;
    desktop::Workspace workspace;
    ImportTableModel model{present, ticks, workspace};
};

} // namespace

TEST_F(ImportTableModelTest, KeepsTheRulesOfQtForModels)
{
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setShownRows(0, 3);
    ticks.setAllTicked(false);
    model.ticksDidChange();
    reviewed.sortIndexUsingDescriptors({{rules::SortKey::path}});
    model.reload(reviewed);
    model.setShownRows(0, 2);
    EXPECT_EQ(model.rowCount(), 3);
}

TEST_F(ImportTableModelTest, IsEmptyBeforeAFileIsReviewed)
{
    const ImportTableModel empty(present, ticks, workspace);
    EXPECT_EQ(empty.rowCount(), 0);
    EXPECT_EQ(empty.columnCount(), 6);
}

TEST_F(ImportTableModelTest, GivesACheckBoxToEachRuleAndToNothingElse)
{
    ticks.setTicked(3, false);
    EXPECT_EQ(data(0, workflow::ImportColumn::tick, Qt::CheckStateRole), Qt::Checked);
    EXPECT_EQ(data(1, workflow::ImportColumn::tick, Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_TRUE(model.index(1, 1).flags().testFlag(Qt::ItemIsUserCheckable));
    EXPECT_EQ(data(1, workflow::ImportColumn::tick), QString());
    for (const auto column : {workflow::ImportColumn::application, workflow::ImportColumn::path}) {
        EXPECT_FALSE(data(1, column, Qt::CheckStateRole).isValid());
        EXPECT_FALSE(model.index(1, static_cast<int>(column)).flags().testFlag(Qt::ItemIsUserCheckable));
    }
}

TEST_F(ImportTableModelTest, TellsOfAClickByTheRulesSequence)
{
    const QSignalSpy clicks(&model, &ImportTableModel::checkBoxClicked);
    EXPECT_TRUE(model.setData(model.index(1, 1), Qt::Unchecked, Qt::CheckStateRole));
    ASSERT_EQ(clicks.size(), 1);
    EXPECT_EQ(clicks[0], (QVariantList{qint64(3), false}));
    EXPECT_FALSE(model.setData(model.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_FALSE(model.setData(model.index(1, 1), QStringLiteral("text"), Qt::EditRole));
}

TEST_F(ImportTableModelTest, TheHeaderTellsWhetherAllRulesAreTicked)
{
    EXPECT_EQ(tickHeader(Qt::CheckStateRole), Qt::Checked);
    EXPECT_EQ(tickHeader(Qt::AccessibleDescriptionRole), QStringLiteral("all rules ticked"));
    ticks.setTicked(3, false);
    EXPECT_EQ(tickHeader(Qt::CheckStateRole), Qt::PartiallyChecked);
    EXPECT_EQ(tickHeader(Qt::AccessibleDescriptionRole), QStringLiteral("some rules ticked"));
    ticks.setAllTicked(false);
    EXPECT_EQ(tickHeader(Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_EQ(tickHeader(Qt::AccessibleDescriptionRole), QStringLiteral("no rule ticked"));
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::CheckStateRole).isValid());
}

TEST_F(ImportTableModelTest, CountsTheTicksOfTheRulesThatAreShown)
{
    const std::vector<rules::RuleRef> rules = reviewed.allRules();
    model.reload(reviewed, rules::listedRows({rules[0], rules[1]}));
    EXPECT_EQ(model.countOfTicked(), 2U);
    for (const rules::RuleRef& rule : rules)
        ticks.setTicked(workflow::sequenceOf(rule), rule != rules[0]);
    model.ticksDidChange();
    EXPECT_EQ(model.countOfTicked(), 1U);
    EXPECT_EQ(model.commonTick(), Qt::PartiallyChecked);
    model.reload(reviewed, rules::listedRows({rules[1]}));
    EXPECT_EQ(model.commonTick(), Qt::Checked);
}

TEST_F(ImportTableModelTest, TicksOfAllRowsChangeWithOneSignal)
{
    const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    ticks.setAllTicked(false);
    model.ticksDidChange();
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex(), model.index(0, 1));
    EXPECT_EQ(changes[0][1].toModelIndex(), model.index(2, 1));
}

TEST_F(ImportTableModelTest, ARuleThatIsPresentIsItalicOnceItIsInView)
{
    model.setShownRows(0, 3);
    EXPECT_TRUE(data(2, workflow::ImportColumn::path, Qt::FontRole).value<QFont>().italic());
    EXPECT_FALSE(data(1, workflow::ImportColumn::path, Qt::FontRole).value<QFont>().italic());
    EXPECT_EQ(data(2, workflow::ImportColumn::path, Qt::AccessibleDescriptionRole),
        QStringLiteral("file not found, already present"));
}

TEST_F(ImportTableModelTest, ItsBandFlagIsNotTheMainTables)
{
    const auto bandOf = [](RuleCellsModel& table, int row) {
        table.setShownRows(row, row + 1);
        return table.data(table.index(row, 0), Qt::BackgroundRole).value<QBrush>().color().rgb();
    };
    RulesTableModel main(reviewed, workspace);
    main.reload();
    const auto band = bandOf(model, 1);
    bandOf(main, 1); // one flip of the main table's
    ImportTableModel next(present, ticks, workspace);
    next.reload(reviewed);
    EXPECT_NE(bandOf(next, 1), band) << "one flip since";
    next.reload(reviewed);
    EXPECT_EQ(bandOf(next, 1), band) << "and another, which no new table has reset";
}

} // namespace quorvane::windows
