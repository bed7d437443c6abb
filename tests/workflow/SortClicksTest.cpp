#include "workflow/SortClicks.h"

#include <gtest/gtest.h>

namespace quorvane {

TEST(SortClicks, AFirstClickSortsAscending)
{
    const std::vector<SortDescriptor> expected{{SortKey::path, true}};
    EXPECT_EQ(sortDescriptorsAfterClick({}, SortKey::path), expected);
}

TEST(SortClicks, AClickOnThePrimaryColumnTurnsItsDirectionRoundAndBack)
{
    auto descriptors = sortDescriptorsAfterClick({}, SortKey::path);
    descriptors = sortDescriptorsAfterClick(descriptors, SortKey::path);
    EXPECT_EQ(descriptors, (std::vector<SortDescriptor>{{SortKey::path, false}}));
    descriptors = sortDescriptorsAfterClick(descriptors, SortKey::path);
    EXPECT_EQ(descriptors, (std::vector<SortDescriptor>{{SortKey::path, true}}));
}

TEST(SortClicks, EarlierColumnsBreakTiesInTheOrderOfTheirLastClick)
{
    // given a table sorted by path downwards and then by tag
    auto descriptors = sortDescriptorsAfterClick({{SortKey::path, true}}, SortKey::path);
    descriptors = sortDescriptorsAfterClick(descriptors, SortKey::tag);
    EXPECT_EQ(descriptors, (std::vector<SortDescriptor>{{SortKey::tag, true}, {SortKey::path, false}}));

    // when the path is clicked again, it comes first, ascending anew, and stands there once
    descriptors = sortDescriptorsAfterClick(descriptors, SortKey::path);
    EXPECT_EQ(descriptors, (std::vector<SortDescriptor>{{SortKey::path, true}, {SortKey::tag, true}}));
}

} // namespace quorvane
