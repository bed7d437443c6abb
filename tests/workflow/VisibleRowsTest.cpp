#include "workflow/VisibleRows.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace quorvane::workflow {

namespace {

bool shaded = false;

// Rows of which every `groupLength`-th begins a group; counts how often each row's first cell is made.
class CountingRows {
public:
    explicit CountingRows(std::size_t groupLength)
        : m_groupLength(groupLength)
    {
    }
    VisibleRows::MakeCell maker()
    {
        return [this](std::size_t row, int column) {
            RuleCell cell;
            if (column == 0) {
                made.push_back(row);
                cell.startsGroup = row % m_groupLength == 0;
            }
            cell.text = std::to_string(row);
            return cell;
        };
    }
    std::vector<std::size_t> made;

private:
    std::size_t m_groupLength;
};

} // namespace

TEST(VisibleRows, MakesACellOnceWhileItsRowIsInView)
{
    CountingRows rows(2);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 3, rows.maker());
    shown.show(0, 3, rows.maker());
    shown.show(1, 4, rows.maker());
    EXPECT_EQ(rows.made, (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(VisibleRows, MakesARowAnewThatLeftTheViewAndCameBack)
{
    CountingRows rows(2);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 2, rows.maker());
    shown.show(1, 3, rows.maker());
    EXPECT_EQ(shown.find(0), nullptr);
    shown.show(0, 2, rows.maker());
    EXPECT_EQ(rows.made, (std::vector<std::size_t>{0, 1, 2, 0}));
}

TEST(VisibleRows, KeepsNothingOverAReload)
{
    CountingRows rows(2);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 2, rows.maker());
    shown.forget();
    EXPECT_EQ(shown.find(0), nullptr);
    shown.show(0, 2, rows.maker());
    EXPECT_EQ(rows.made.size(), 4U);
}

TEST(VisibleRows, RowsOfOneGroupShareABandAndNeighbouringGroupsDiffer)
{
    CountingRows rows(3);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 9, rows.maker());
    for (std::size_t row = 1; row < 9; ++row) {
        const bool sameBand = shown.find(row)->shaded == shown.find(row - 1)->shaded;
        EXPECT_EQ(sameBand, row % 3 != 0) << row;
    }
}

TEST(VisibleRows, TheBandFlagOutlivesReloadsAndTables)
{
    // given a table that leaves the flag in some state
    CountingRows rows(1);
    VisibleRows first(ruleColumnCount, shaded);
    first.show(0, 1, rows.maker());
    const bool left = first.find(0)->shaded;

    // when another one makes its first group, the flag is flipped from there
    VisibleRows second(ruleColumnCount, shaded);
    second.show(0, 1, rows.maker());
    EXPECT_NE(second.find(0)->shaded, left);
    second.forget();
    second.show(0, 1, rows.maker());
    EXPECT_EQ(second.find(0)->shaded, left);
}

TEST(VisibleRows, ARowThatContinuesAGroupTakesTheBandOfTheRowMadeBefore)
{
    // When scrolling up, a row in the middle of a group is made before the row that begins it.
    CountingRows rows(4);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(4, 6, rows.maker());
    const bool below = shown.find(4)->shaded;
    shown.show(3, 6, rows.maker());
    EXPECT_EQ(shown.find(3)->shaded, below);
}

TEST(VisibleRows, RowsBelowRemovedOnesKeepTheirCellsUnderNewNumbers)
{
    CountingRows rows(100);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 6, rows.maker());
    shown.remove(1, 2);
    EXPECT_EQ(shown.find(0)->cells.front().text, "0");
    EXPECT_EQ(shown.find(1)->cells.front().text, "3");
    EXPECT_EQ(shown.find(3)->cells.front().text, "5");
    EXPECT_EQ(shown.find(4), nullptr);
    EXPECT_EQ(rows.made.size(), 6U);
}

TEST(VisibleRows, ARemadeCellThatBeginsAGroupFlipsTheBandOfItsRow)
{
    CountingRows rows(2);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 2, rows.maker());
    const bool before = shown.find(1)->shaded;
    EXPECT_TRUE(shown.remake(1, 0, [](std::size_t, int) {
        RuleCell cell;
        cell.startsGroup = true;
        cell.text = "head";
        return cell;
    }));
    EXPECT_EQ(shown.find(1)->cells.front().text, "head");
    EXPECT_NE(shown.find(1)->shaded, before);
}

TEST(VisibleRows, ARowWhoseGroupsHeadIsGoneBeginsTheGroup)
{
    CountingRows rows(3);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 3, rows.maker()); // 0 begins the group of 0, 1 and 2
    const bool band = shown.find(1)->shaded;
    shown.remove(0, 1);
    rows.made.clear();
    shown.show(0, 2, rows.maker());
    EXPECT_TRUE(shown.find(0)->cells[0].startsGroup);
    EXPECT_EQ(shown.find(0)->cells[1].text, "1") << "only the application was made anew";
    EXPECT_NE(shown.find(0)->shaded, band);
    EXPECT_EQ(rows.made, std::vector<std::size_t>{0});
    shown.show(0, 2, rows.maker());
    EXPECT_EQ(rows.made.size(), 1U) << "asked once";
}

TEST(VisibleRows, AHeadThatIsNowBelowItsOwnGroupContinuesItAndKeepsItsBand)
{
    CountingRows rows(3);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 6, rows.maker());
    const bool band = shown.find(3)->shaded;
    shown.remove(2, 1); // row 3, a head, is now row 2, which is not
    shown.show(0, 5, rows.maker());
    EXPECT_FALSE(shown.find(2)->cells[0].startsGroup);
    EXPECT_EQ(shown.find(2)->shaded, band);
}

TEST(VisibleRows, ACellOutOfViewIsNotRemade)
{
    CountingRows rows(2);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 2, rows.maker());
    EXPECT_FALSE(shown.remake(2, 0, rows.maker()));
    EXPECT_EQ(rows.made.size(), 2U);
}

TEST(VisibleRows, ATextStaysUntilTheRowIsMadeAnew)
{
    constexpr int tag = 5;
    CountingRows rows(2);
    VisibleRows shown(ruleColumnCount, shaded);
    shown.show(0, 1, rows.maker());
    shown.setText(0, tag, "typed");
    EXPECT_EQ(shown.find(0)->cells[tag].text, "typed");
    shown.forget();
    shown.show(0, 1, rows.maker());
    EXPECT_EQ(shown.find(0)->cells[tag].text, "0");
}

} // namespace quorvane::workflow
