#include "windows/DifferenceModel.h"

#include "rules/RulesText.h"
#include "windows/Shades.h"

#include <QAbstractItemModelTester>
#include <QBrush>

#include <gtest/gtest.h>

#include <algorithm>

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

TEST(DifferenceModel, SaysByWordsSignsAndColoursWhatChanged)
{
    const auto table = workflow::differenceTable(
        rules::rulesDifference(rules::rulesOfText("allow prefix \"/a\" \"any\" r \"\" \"\" \"0\"\n"
                                                  "allow prefix \"/c\" \"any\" r \"old\" \"\" \"0\"\n"),
            rules::rulesOfText("allow prefix \"/b\" \"any\" r \"\" \"\" \"0\"\n"
                               "allow prefix \"/c\" \"any\" r \"new\" \"\" \"0\"\n")));
    DifferenceModel model;
    model.setTable(table);
    ASSERT_EQ(model.rowCount(), 3);
    std::string signs;
    for (int row = 0; row < 3; ++row) {
        const QString first = model.index(row, 0).data().toString();
        const QChar sign = first.front();
        signs += sign == QChar(0x2212) ? '-' : sign.toLatin1();
        EXPECT_EQ(first[1], QLatin1Char(' '));
        EXPECT_EQ(first.mid(2).toStdString(), table->text(static_cast<std::size_t>(row), 0));
        EXPECT_EQ(model.index(row, 1).data().toString().toStdString(),
            table->text(static_cast<std::size_t>(row), 1));
        const auto color = [&](int column, int role) {
            return model.index(row, column).data(role).value<QBrush>().color();
        };
        const bool isAdded = sign == QLatin1Char('+');
        const bool isRemoved = sign == QChar(0x2212);
        EXPECT_EQ(color(0, Qt::ForegroundRole),
            isAdded         ? QColor(shades::added)
                : isRemoved ? QColor(shades::removed)
                            : QColor(shades::changed));
        EXPECT_EQ(color(1, Qt::ForegroundRole), QColor(shades::text));
        EXPECT_EQ(color(1, Qt::BackgroundRole),
            isAdded         ? QColor(shades::addedBand)
                : isRemoved ? QColor(shades::removedBand)
                            : QColor(shades::changedBand));
        EXPECT_TRUE(model.index(row, 1)
                        .data(Qt::ToolTipRole)
                        .toString()
                        .contains(QString::fromStdString(table->line(static_cast<std::size_t>(row)))
                                      .section(QLatin1Char(' '), 0, 1)
                                      .toHtmlEscaped()));
        EXPECT_FALSE(model.index(row, 1).data(Qt::DecorationRole).isValid());
    }
    std::sort(signs.begin(), signs.end());
    EXPECT_EQ(signs, "+-~");
    EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::TextAlignmentRole).toInt(),
        static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter));
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
}

TEST(DifferenceModel, CutsTextsBeyondFourThousandBytes)
{
    for (const std::size_t length : {4000U, 4001U}) {
        const std::string path(length, 'x');
        const auto table = workflow::differenceTable(rules::rulesDifference(
            {}, rules::rulesOfText("allow prefix \"" + path + "\" \"any\" r \"\" \"\" \"0\"\n")));
        DifferenceModel model;
        model.setTable(table);
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells.append(model.index(0, column).data().toString());
        const QString shown = QString(4000, QLatin1Char('x'));
        EXPECT_TRUE(cells.contains(length == 4000 ? shown : shown + QChar(0x2026))) << length;
    }
}

} // namespace quorvane::windows
