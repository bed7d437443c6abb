#include "history/Journal.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

namespace quorvane {

TEST(Journal, GivesBackTheBytesOfEachVersion)
{
    JournalFolder folder;
    const auto journal = folder.journal();

    const auto first = journal->record(version("one\n"));
    const auto second = journal->record(version("one\ntwo\n"));

    ASSERT_TRUE(first && second) << journal->problem().value_or("");
    EXPECT_EQ(journal->bytesOf(*first), "one\n");
    EXPECT_EQ(journal->bytesOf(*second), "one\ntwo\n");
}

} // namespace quorvane
