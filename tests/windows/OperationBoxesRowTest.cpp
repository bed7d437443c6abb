#include "windows/OperationBoxesRow.h"

#include <QCheckBox>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <bit>

namespace quorvane::windows {

TEST(OperationBoxesRow, HasABoxForEachOperation)
{
    const OperationBoxesRow row;
    QStringList titles;
    for (const QCheckBox* box : row.findChildren<QCheckBox*>())
        titles.append(box->text());
    EXPECT_EQ(titles.join(QLatin1Char(' ')), QStringLiteral("&Read &Write Cr&eate &Mount E&xecute"));
    EXPECT_EQ(row.operations(), 0U);
}

TEST(OperationBoxesRow, TellsOfEachTick)
{
    OperationBoxesRow row;
    const QSignalSpy changed(&row, &OperationBoxesRow::operationsChanged);
    std::uint32_t ticked = 0;
    const auto boxes = row.findChildren<QCheckBox*>();
    for (QCheckBox* box : boxes) {
        box->click();
        const std::uint32_t more = row.operations();
        EXPECT_EQ(more & ticked, ticked);
        EXPECT_EQ(std::popcount(more), std::popcount(ticked) + 1) << box->text().toStdString();
        ticked = more;
    }
    EXPECT_EQ(changed.size(), boxes.size());
    boxes.front()->click();
    EXPECT_LT(row.operations(), ticked);
}

TEST(OperationBoxesRow, PassesTheKeyboardToItsFirstBoxAndStandsAtTheEdge)
{
    OperationBoxesRow row;
    const auto* first = row.findChild<QCheckBox*>();
    EXPECT_EQ(row.focusProxy(), first);
    row.resize(900, 40);
    row.show();
    EXPECT_EQ(first->pos().x(), 0);
    EXPECT_LT(row.findChildren<QCheckBox*>().last()->geometry().right(), 700) << "the boxes stand together";
}

} // namespace quorvane::windows
