#include "history/Journal.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::history {

namespace {

// The texts whose versions are in kept/journal-1.db, which was written once, when format 1 was new: a whole
// frame, one line changed, lines inserted at both ends, the empty file, and a text seen before.
std::vector<std::string> keptTexts()
{
    const std::string first = test::textOfLines(40, 0, "rwx");
    const std::string changed = test::textOfLines(40, 17, "r");
    return {first, changed, "# begins\n" + changed + "# ends\n", "", first};
}

} // namespace

TEST(KeptJournal, OfTheFirstFormatGivesBackEveryVersion)
{
    test::JournalFolder folder;
    ASSERT_EQ(folder.place().makeFolder(), std::nullopt);
    std::filesystem::copy_file(KEPT_JOURNAL, folder.place().databaseFile());
    const auto journal = folder.journal();

    const std::vector<std::string> texts = keptTexts();
    ASSERT_EQ(test::numbersIn(*journal), (std::vector<std::int64_t>{5, 4, 3, 2, 1}))
        << journal->problem().value_or("");
    for (std::size_t number = 1; number <= texts.size(); ++number)
        EXPECT_EQ(journal->bytesOf(static_cast<std::int64_t>(number)), texts[number - 1]) << number;
    EXPECT_EQ(journal->version(2)->program, "test");
    EXPECT_EQ(journal->version(2)->action, "Change rules");
    EXPECT_EQ(journal->version(2)->before, 1);
    EXPECT_EQ(journal->version(4)->kind, VersionKind::foreign);
}

TEST(KeptJournal, OfTheFirstFormatIsContinued)
{
    test::JournalFolder folder;
    ASSERT_EQ(folder.place().makeFolder(), std::nullopt);
    std::filesystem::copy_file(KEPT_JOURNAL, folder.place().databaseFile());

    const JournalLimits forGood{.days = 1'000'000};
    ASSERT_TRUE(folder.journal(forGood)->record(test::version("after all\n")));
    EXPECT_EQ(folder.journal()->bytesOf(6), "after all\n");
    EXPECT_EQ(folder.journal()->bytesOf(2), keptTexts()[1]);
    EXPECT_EQ(folder.journal()->version(6)->before, 5);
}

} // namespace quorvane::history
