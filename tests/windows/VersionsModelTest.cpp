#include "windows/VersionsModel.h"

#include "windows/QtText.h"
#include "windows/Shades.h"

#include <QAbstractItemModelTester>
#include <QBrush>
#include <QDateTime>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <vector>

namespace quorvane::windows {

namespace {

using history::JournalVersion;
using history::VersionState;

JournalVersion version(std::int64_t number, VersionState state = VersionState::done, bool isReadable = true)
{
    return {.number = number,
        .program = "quorvanectl",
        .action = "Add Rule",
        .state = state,
        .isReadable = isReadable};
}

QString cell(const VersionsModel& model, int row, VersionsModel::Column column)
{
    return model.index(row, static_cast<int>(column)).data().toString();
}

} // namespace

TEST(VersionsModel, KeepsTheRulesOfQtForModels)
{
    VersionsModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setVersions({version(2), version(1)});
    model.setVersions({version(3), version(2), version(1)});
    model.setSearch(QStringLiteral("no such action"));
    model.addFound(2);
    EXPECT_EQ(model.rowCount(), 1);
}

TEST(VersionsModel, SaysOfAVersionThatIsNotLikeOthersWhatBecameOfIt)
{
    VersionsModel model;
    model.setVersions({version(4), version(3, VersionState::underWay), version(2, VersionState::recovered),
        version(1, VersionState::done, false)});
    const auto action = [&](int row) { return cell(model, row, VersionsModel::Column::action); };
    EXPECT_EQ(action(0), QStringLiteral("Add Rule"));
    EXPECT_EQ(action(1), QStringLiteral("Add Rule (not completed yet)"));
    EXPECT_EQ(action(2), QStringLiteral("Add Rule (completed later)"));
    EXPECT_EQ(action(3), QStringLiteral("Add Rule (can no longer be read)"));
}

TEST(VersionsModel, ShowsEachColumnInItsWords)
{
    VersionsModel model;
    model.setCounted(QStringLiteral("Rules"));
    JournalVersion full = version(7);
    full.time = QDateTime(QDate(2026, 11, 1), QTime(9, 5, 3)).toSecsSinceEpoch();
    full.rules = 1234;
    full.added = 1;
    full.removed = 2;
    full.changed = 3;
    JournalVersion foreign = version(6);
    foreign.program.reset();
    model.setVersions({full, foreign});
    const auto row = [&model](int number) {
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells.append(model.index(number, column).data().toString());
        return cells.join(QLatin1Char('|'));
    };
    EXPECT_EQ(row(0),
        QStringLiteral("7|2026-11-01 09:05:03|Add Rule|quorvanectl|%1|+1|\u22122|~3").arg(inWords(1234)));
    EXPECT_TRUE(row(1).endsWith(QStringLiteral("|another program|0|||"))) << "noughts stand out of the way";
    QStringList titles;
    for (int column = 0; column < model.columnCount(); ++column)
        titles.append(model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    EXPECT_EQ(titles.join(QLatin1Char('|')),
        QStringLiteral("Version|Time|What Was Done|Program|Rules|Added|Removed|Changed"));
    for (const int outside : {-1, model.columnCount()})
        EXPECT_FALSE(model.headerData(outside, Qt::Horizontal, Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Vertical, Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
}

TEST(VersionsModel, LiesNumbersToTheRightAndColoursChanges)
{
    VersionsModel model;
    model.setVersions({version(2), version(1, VersionState::done, false)});
    using Column = VersionsModel::Column;
    for (int column = 0; column < model.columnCount(); ++column) {
        const bool isNumber
            = column == static_cast<int>(Column::number) || column >= static_cast<int>(Column::count);
        const int expected = static_cast<int>((isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
        EXPECT_EQ(model.index(0, column).data(Qt::TextAlignmentRole).toInt(), expected) << column;
        EXPECT_EQ(model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).toInt(), expected)
            << column;
    }
    const auto color = [&model](int row, Column column) {
        return model.index(row, static_cast<int>(column)).data(Qt::ForegroundRole).value<QBrush>().color();
    };
    EXPECT_EQ(color(0, Column::action), QColor(shades::text));
    EXPECT_EQ(color(1, Column::action), QColor(shades::failureText));
    EXPECT_EQ(color(1, Column::number), QColor(shades::text));
    EXPECT_EQ(color(0, Column::added), QColor(shades::added));
    EXPECT_EQ(color(0, Column::removed), QColor(shades::removed));
    EXPECT_EQ(color(0, Column::changed), QColor(shades::changed));
    const auto toolTip = [&model](Column column) {
        return model.index(1, static_cast<int>(column)).data(Qt::ToolTipRole).toString();
    };
    EXPECT_TRUE(toolTip(Column::action).contains(QStringLiteral("can no longer be read")));
    EXPECT_EQ(toolTip(Column::program), QString());
}

TEST(VersionsModel, AddsNewVersionsAtTheTopAndResetsForAnythingElse)
{
    VersionsModel model;
    model.setVersions({version(2), version(1)});
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    model.setVersions({version(4), version(3), version(2), version(1)});
    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 0);
    EXPECT_EQ(inserted[0][2].toInt(), 1);
    model.setVersions({version(4), version(3), version(2), version(1)});
    EXPECT_EQ(inserted.count(), 1) << "nothing new";
    EXPECT_EQ(resets.count(), 0);
    model.setVersions({version(4), version(3), version(2)});
    EXPECT_EQ(resets.count(), 1) << "one was forgotten";
    model.setVersions({version(5), version(4, VersionState::recovered), version(3), version(2)});
    EXPECT_EQ(resets.count(), 2) << "of another state";
    model.setVersions(
        {version(5), version(4, VersionState::recovered), version(3), version(2, VersionState::done, false)});
    EXPECT_EQ(resets.count(), 3) << "no longer readable";
    EXPECT_EQ(model.rowCount(), 4);
}

TEST(VersionsModel, ShowsWhatASearchFindsInItsTextsOrInItsRules)
{
    VersionsModel model;
    JournalVersion other = version(11);
    other.action = "Delete Rule";
    model.setVersions({version(12), other, version(10)});
    const auto shown = [&model] {
        QStringList numbers;
        for (int row = 0; row < model.rowCount(); ++row)
            numbers.append(cell(model, row, VersionsModel::Column::number));
        return numbers.join(QLatin1Char(' '));
    };
    model.setSearch(QStringLiteral("dELETE"));
    EXPECT_EQ(shown(), QStringLiteral("11"));
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    model.addFound(10);
    model.addFound(10);
    model.addFound(11); // is shown already
    model.addFound(99); // was forgotten meanwhile
    EXPECT_EQ(shown(), QStringLiteral("11 10"));
    model.addFound(12);
    EXPECT_EQ(shown(), QStringLiteral("12 11 10"));
    EXPECT_EQ(inserted.count(), 2);
    EXPECT_EQ(model.rowOf(11), 1);
    EXPECT_EQ(model.rowOf(99), std::nullopt);
    model.setVersions({version(13), version(12), other, version(10)});
    EXPECT_EQ(shown(), QStringLiteral("12 11 10")) << "the new one is not what is searched for";
    EXPECT_EQ(inserted.count(), 2);
    EXPECT_EQ(resets.count(), 0);
    model.setSearch(QStringLiteral("12"));
    EXPECT_EQ(shown(), QStringLiteral("12")) << "what was found was for another text";
    model.setSearch({});
    EXPECT_EQ(shown(), QStringLiteral("13 12 11 10"));
    EXPECT_EQ(resets.count(), 2);
    model.setSearch({});
    EXPECT_EQ(resets.count(), 2) << "the same rows";
}

TEST(VersionsModel, TellsWhenWhatItCountsIsNamed)
{
    VersionsModel model;
    QSignalSpy changes(&model, &QAbstractItemModel::headerDataChanged);
    model.setCounted(QStringLiteral("Values"));
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes[0][1].toInt(), static_cast<int>(VersionsModel::Column::count));
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
}

} // namespace quorvane::windows
