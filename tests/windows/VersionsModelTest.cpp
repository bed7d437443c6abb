#include "windows/VersionsModel.h"

#include <QAbstractItemModelTester>

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

} // namespace quorvane::windows
