#include "windows/RulesTableModel.h"
#include "tests/support/TestRules.h"
#include "windows/QtText.h"
#include "windows/Shades.h"

#include <QAbstractItemModelTester>
#include <QBrush>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QSignalSpy>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvane::windows {

namespace {

class RulesTableModelTest : public testing::Test {
protected:
    RulesTableModelTest()
    {
        store.addWatchRule(
            test::watchRule({.path = "/usr", .processName = "/bin/a", .tag = "w", .operations = 1}));
        store.addPolicyRule(
            test::policyRule({.path = "/", .processName = "/nonexistent/b", .operations = 1}));
        store.addPolicyRule(
            test::policyRule({.path = "/", .processName = "/bin/c", .operations = 1, .system = true}));
        model.reload();
    }
    QVariant data(int row, workflow::RuleColumn column, int role = Qt::DisplayRole)
    {
        return model.data(model.index(row, static_cast<int>(column)), role);
    }

    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    desktop::Workspace workspace;
    RulesTableModel model{store, workspace};
};

} // namespace

TEST_F(RulesTableModelTest, KeepsTheRulesOfQtForModels)
{
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setShownRows(0, 2);
    model.setShowsSystemRules(true);
    model.reload();
    model.setShownRows(0, 3);
    const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    model.remakeCells(1, {static_cast<int>(workflow::RuleColumn::application)});
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(model.rowCount(), 3);
}

TEST_F(RulesTableModelTest, HidesSystemRulesUntilTheyAreAskedFor)
{
    EXPECT_EQ(model.rowCount(), 2);
    model.setShowsSystemRules(true);
    EXPECT_EQ(model.rowCount(), 2);
    model.reload();
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(data(2, workflow::RuleColumn::application), QStringLiteral("c"));
}

TEST_F(RulesTableModelTest, ShowsTheRowsItTookUntilItReloads)
{
    store.applyFilterWithString("nothing");
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(data(1, workflow::RuleColumn::application), QStringLiteral("b"));
    model.reload();
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(RulesTableModelTest, TakesOutOneRunOfRowsOrNoneAndLeavesOthersToAReload)
{
    const rules::PolicyRulePtr hidden
        = test::policyRule({.path = "/h", .processName = "/bin/h", .system = true});
    store.addPolicyRule(hidden);
    model.reload();
    const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    const QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);

    EXPECT_TRUE(store.deletePolicyRule(*hidden));
    EXPECT_TRUE(model.removeRules());
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(removals.count(), 0);

    EXPECT_TRUE(store.deleteWatchRule(*std::get<rules::WatchRulePtr>(model.ruleAt(0))));
    EXPECT_TRUE(model.removeRules());
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(removals.count(), 1);

    store.addPolicyRule(test::policyRule({.path = "/a", .processName = "/bin/a"}));
    EXPECT_FALSE(model.removeRules());
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(resets.count(), 0);
}

TEST_F(RulesTableModelTest, AnswersForRowsThatAreNotInView)
{
    EXPECT_EQ(data(0, workflow::RuleColumn::ruleClass), QStringLiteral("Watch"));
    EXPECT_EQ(data(0, workflow::RuleColumn::application, Qt::AccessibleDescriptionRole), QStringLiteral("a"));
    EXPECT_FALSE(data(0, workflow::RuleColumn::path, Qt::BackgroundRole).isValid());
}

TEST_F(RulesTableModelTest, GivesPlainColoursAndFonts)
{
    model.setShownRows(0, 2);
    EXPECT_EQ(data(0, workflow::RuleColumn::tag, Qt::ForegroundRole).value<QBrush>().color(), shades::blue);
    EXPECT_EQ(
        data(1, workflow::RuleColumn::path, Qt::ForegroundRole).value<QBrush>().color(), QColor(Qt::black));
    EXPECT_EQ(
        data(1, workflow::RuleColumn::application, Qt::ForegroundRole).value<QBrush>().color(), shades::red)
        << "there is no such program";
    EXPECT_TRUE(data(1, workflow::RuleColumn::application, Qt::FontRole).value<QFont>().bold());
    EXPECT_FALSE(data(1, workflow::RuleColumn::path, Qt::FontRole).value<QFont>().bold());
}

TEST_F(RulesTableModelTest, TheBandOfARowInViewIsOneOfTwoShades)
{
    model.setShownRows(0, 2);
    const QColor watch = data(0, workflow::RuleColumn::path, Qt::BackgroundRole).value<QBrush>().color();
    const QColor policy = data(1, workflow::RuleColumn::path, Qt::BackgroundRole).value<QBrush>().color();
    const QList<QColor> shades{QColor(0xff, 0xff, 0xff), QColor(0xf5, 0xf5, 0xf5)};
    EXPECT_NE(watch.rgb(), policy.rgb());
    EXPECT_TRUE(shades[0].rgb() == watch.rgb() || shades[1].rgb() == watch.rgb())
        << watch.name().toStdString();
    EXPECT_TRUE(shades[0].rgb() == policy.rgb() || shades[1].rgb() == policy.rgb())
        << policy.name().toStdString();
}

TEST_F(RulesTableModelTest, OneBandFlagServesAllTablesOfTheMainWindowsKind)
{
    model.setShownRows(1, 2); // one group: one flip
    const QColor band = data(1, workflow::RuleColumn::path, Qt::BackgroundRole).value<QBrush>().color();
    RulesTableModel other(store, workspace);
    other.reload();
    other.setShownRows(1, 2);
    const QVariant next = other.data(other.index(1, 0), Qt::BackgroundRole);
    EXPECT_NE(next.value<QBrush>().color().rgb(), band.rgb());
}

TEST_F(RulesTableModelTest, DecoratesStatesAndApplications)
{
    model.setShowsSystemRules(true);
    model.reload();
    EXPECT_FALSE(data(2, workflow::RuleColumn::state, Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_FALSE(data(1, workflow::RuleColumn::state, Qt::DecorationRole).isValid());
    EXPECT_FALSE(data(1, workflow::RuleColumn::application, Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_FALSE(data(0, workflow::RuleColumn::application, Qt::DecorationRole).isValid());
}

TEST_F(RulesTableModelTest, ToolTipsShowTextAsItIs)
{
    const std::string path = "/nonexistent/<b>x</b>&amp;";
    store.addPolicyRule(test::policyRule({.path = path, .processName = path, .tag = path, .operations = 1}));
    model.reload();
    for (const workflow::RuleColumn column :
        {workflow::RuleColumn::application, workflow::RuleColumn::tag, workflow::RuleColumn::path}) {
        QTextDocument document;
        document.setHtml(data(2, column, Qt::ToolTipRole).toString());
        EXPECT_TRUE(document.toPlainText().startsWith(toQt(path))) << fromQt(document.toPlainText());
    }
}

TEST_F(RulesTableModelTest, AMissingProgramHasAFaintPlaceholder)
{
    store.addPolicyRule(test::policyRule({.path = "/", .processName = "/bin/sh", .operations = 1}));
    model.reload();
    const auto strength = [this](int row) {
        const auto icon = data(row, workflow::RuleColumn::application, Qt::DecorationRole).value<QIcon>();
        const QImage image = icon.pixmap(16, 16).toImage();
        int strongest = 0;
        for (int x = 0; x < image.width(); ++x)
            strongest = std::max(strongest, qAlpha(image.pixel(x, image.height() / 2)));
        return strongest;
    };
    EXPECT_GT(strength(1), 0) << "/nonexistent/b";
    EXPECT_LT(strength(1), 128);
    EXPECT_GT(strength(2), 200) << "/bin/sh";
}

TEST_F(RulesTableModelTest, NamesItsColumnsAndSaysHowTheyAreSorted)
{
    const auto header
        = [this](int column, int role) { return model.headerData(column, Qt::Horizontal, role); };
    EXPECT_EQ(header(0, Qt::DisplayRole).toString(), QStringLiteral("Application"));
    EXPECT_EQ(header(static_cast<int>(workflow::RuleColumn::path), Qt::DisplayRole).toString(),
        QStringLiteral("Path"));
    EXPECT_FALSE(header(-1, Qt::DisplayRole).isValid());
    EXPECT_FALSE(header(model.columnCount(), Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Vertical, Qt::DisplayRole).isValid());
    EXPECT_EQ(header(1, Qt::TextAlignmentRole).toInt(), static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter));

    const QSignalSpy changes(&model, &QAbstractItemModel::headerDataChanged);
    EXPECT_FALSE(header(1, Qt::AccessibleDescriptionRole).isValid());
    model.setSortedColumn(1, Qt::AscendingOrder);
    EXPECT_EQ(header(1, Qt::AccessibleDescriptionRole).toString(), QStringLiteral("sorted ascending"));
    EXPECT_FALSE(header(0, Qt::AccessibleDescriptionRole).isValid());
    model.setSortedColumn(1, Qt::DescendingOrder);
    EXPECT_EQ(header(1, Qt::AccessibleDescriptionRole).toString(), QStringLiteral("sorted descending"));
    ASSERT_EQ(changes.count(), 2);
    EXPECT_EQ(changes[1][1].toInt(), 0);
    EXPECT_EQ(changes[1][2].toInt(), model.columnCount() - 1);
}

TEST_F(RulesTableModelTest, FindsRulesByTheRecordsThatTheyAre)
{
    model.setShowsSystemRules(true);
    model.reload();
    const std::vector<rules::RuleRef> rules{model.ruleAt(2), model.ruleAt(0),
        test::policyRule({.path = "/", .processName = "/nonexistent/b", .operations = 1})};
    EXPECT_EQ(model.rowsOf(rules), (std::vector<std::size_t>{0, 2})) << "an equal rule is another one";
    EXPECT_EQ(model.rowOf(rules[0]), 2);
    EXPECT_EQ(model.rowOf(rules[2]), std::nullopt);
    EXPECT_TRUE(model.rowsOf({}).empty());
}

TEST_F(RulesTableModelTest, MakesAnewOnlyCellsOfRowsInView)
{
    const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    model.setShownRows(0, 1);
    model.remakeCells(1, {0});
    model.remakeCells(7, {0});
    EXPECT_EQ(changes.count(), 0);
    std::get<rules::WatchRulePtr>(model.ruleAt(0))->setTag("new");
    const int tag = static_cast<int>(workflow::RuleColumn::tag);
    EXPECT_EQ(data(0, workflow::RuleColumn::tag), QStringLiteral("w"));
    model.remakeCells(0, {tag});
    EXPECT_EQ(data(0, workflow::RuleColumn::tag), QStringLiteral("new"));
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex(), model.index(0, 0));
    EXPECT_EQ(changes[0][1].toModelIndex(), model.index(0, model.columnCount() - 1));
}

TEST_F(RulesTableModelTest, TakesAnyRowsForThoseInView)
{
    model.setShownRows(-3, 100);
    EXPECT_TRUE(data(0, workflow::RuleColumn::path, Qt::BackgroundRole).isValid());
    EXPECT_TRUE(data(1, workflow::RuleColumn::path, Qt::BackgroundRole).isValid());
    model.setShownRows(1, 2);
    EXPECT_FALSE(data(0, workflow::RuleColumn::path, Qt::BackgroundRole).isValid()) << "out of view again";
}

TEST_F(RulesTableModelTest, TakesTextsForTagsAlone)
{
    QSignalSpy typed(&model, &RulesTableModel::tagTyped);
    const auto set = [this](workflow::RuleColumn column, int role) {
        return model.setData(model.index(0, static_cast<int>(column)), QStringLiteral("new"), role);
    };
    EXPECT_FALSE(set(workflow::RuleColumn::path, Qt::EditRole));
    EXPECT_FALSE(set(workflow::RuleColumn::tag, Qt::DisplayRole));
    EXPECT_TRUE(typed.isEmpty());
    EXPECT_TRUE(set(workflow::RuleColumn::tag, Qt::EditRole));
    ASSERT_EQ(typed.count(), 1);
    EXPECT_EQ(typed[0][0].toString(), QStringLiteral("new"));
}

TEST_F(RulesTableModelTest, AnswersNothingBeyondItsRowsAndRoles)
{
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
    EXPECT_FALSE(data(0, workflow::RuleColumn::path, Qt::StatusTipRole).isValid());
    EXPECT_EQ(data(0, workflow::RuleColumn::tag, Qt::EditRole), QStringLiteral("w"));
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
    EXPECT_EQ(model.columnCount(model.index(0, 0)), 0);
    EXPECT_EQ(data(0, workflow::RuleColumn::path, Qt::FontRole).value<QFont>().pixelSize(), 12);
    EXPECT_FALSE(data(0, workflow::RuleColumn::path, Qt::FontRole).value<QFont>().italic());
}

} // namespace quorvane::windows
