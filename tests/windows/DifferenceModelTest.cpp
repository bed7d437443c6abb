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

} // namespace quorvane::windows
