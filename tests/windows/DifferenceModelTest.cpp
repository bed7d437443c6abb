#include "windows/DifferenceModel.h"

#include "rules/RulesText.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(DifferenceModel, KeepsTheRulesOfQtForModels)
{
    const auto table = workflow::differenceTable(rules::rulesDifference(
        rules::rulesOfText("allow prefix /a any r\n"), rules::rulesOfText("allow prefix /b any r\n")));
    DifferenceModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setTable(table);
    EXPECT_EQ(model.rowCount(), 2);
    model.setTable(nullptr);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.columnCount(), static_cast<int>(table->titles().size()));
}

TEST(DifferenceModel, TitlesItsColumnsAndNothingElse)
{
    const auto table = workflow::differenceTable(rules::rulesDifference({}, {}));
    DifferenceModel model;
    model.setTable(table);
    const auto title = [&](int section, Qt::Orientation orientation = Qt::Horizontal) {
        return model.headerData(section, orientation, Qt::DisplayRole).toString().toStdString();
    };
    for (int column = 0; column < model.columnCount(); ++column)
        EXPECT_EQ(title(column), table->titles()[static_cast<std::size_t>(column)]);
    EXPECT_EQ(title(-1), "");
    EXPECT_EQ(title(model.columnCount()), "");
    EXPECT_EQ(title(0, Qt::Vertical), "");
}

} // namespace quorvane::windows
