#include "workflow/SortClicks.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

TEST(SortClicks, AFirstClickSortsAscending)
{
    const std::vector<rules::SortDescriptor> expected{{rules::SortKey::path, true}};
    EXPECT_EQ(sortDescriptorsAfterClick({}, rules::SortKey::path), expected);
}

TEST(SortClicks, AClickOnThePrimaryColumnTurnsItsDirectionRoundAndBack)
{
    auto descriptors = sortDescriptorsAfterClick({}, rules::SortKey::path);
    descriptors = sortDescriptorsAfterClick(descriptors, rules::SortKey::path);
    EXPECT_EQ(descriptors, (std::vector<rules::SortDescriptor>{{rules::SortKey::path, false}}));
    descriptors = sortDescriptorsAfterClick(descriptors, rules::SortKey::path);
    EXPECT_EQ(descriptors, (std::vector<rules::SortDescriptor>{{rules::SortKey::path, true}}));
}

TEST(SortClicks, EarlierColumnsBreakTiesInTheOrderOfTheirLastClick)
{
    // given a table sorted by path downwards and then by tag
    auto descriptors = sortDescriptorsAfterClick({{rules::SortKey::path, true}}, rules::SortKey::path);
    descriptors = sortDescriptorsAfterClick(descriptors, rules::SortKey::tag);
    EXPECT_EQ(descriptors,
        (std::vector<rules::SortDescriptor>{{rules::SortKey::tag, true}, {rules::SortKey::path, false}}));

    // when the path is clicked again, it is the first key, ascending again, and occurs once
    descriptors = sortDescriptorsAfterClick(descriptors, rules::SortKey::path);
    EXPECT_EQ(descriptors,
        (std::vector<rules::SortDescriptor>{{rules::SortKey::path, true}, {rules::SortKey::tag, true}}));
}

} // namespace quorvane::workflow
