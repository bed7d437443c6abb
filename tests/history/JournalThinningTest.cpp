#include "history/Journal.h"

#include "tests/history/Hours.h"
#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace quorvane::history {

namespace {

std::optional<std::int64_t> recordAt(Journal& journal, std::int64_t time, std::string_view bytes)
{
    NewVersion made = test::version(bytes);
    made.time = time;
    return journal.record(made);
}

} // namespace

TEST(JournalThinning, LeavesWhatIsKeptReadable)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    std::mt19937 random(1);
    std::map<std::int64_t, std::string> texts;
    std::int64_t time = 1'000'000'000;
    for (int made = 0; made < 300; ++made) {
        time += static_cast<std::int64_t>(random() % (8 * test::hour));
        const std::string text = test::textOfLines(100, random() % 100, std::to_string(made));
        const std::string meant = text + "as meant";
        NewVersion next = test::version(text);
        next.time = time;
        if (made % 3 == 0)
            next.meant = meant;
        const auto number = journal->record(next);
        ASSERT_TRUE(number) << journal->problem().value_or("");
        texts[*number] = text;
    }

    const auto versions = journal->versions();
    EXPECT_LT(versions.size(), 250U);
    EXPECT_EQ(versions.front().number, 300);
    for (const JournalVersion& kept : versions) {
        const std::string& text = texts[kept.number];
        EXPECT_EQ(journal->bytesOf(kept.number), text) << kept.number;
        EXPECT_EQ(journal->meantOf(kept.number), kept.hasMeant ? text + "as meant" : text) << kept.number;
    }
}

TEST(JournalThinning, KeepsEverythingWhileTheClockGoesBack)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    for (std::int64_t made = 0; made < 20; ++made)
        ASSERT_TRUE(recordAt(*journal, (1000 - made * 40) * test::day, "rules " + std::to_string(made)));

    EXPECT_EQ(journal->versions().size(), 20U);
    EXPECT_EQ(journal->newest()->number, 20);
}

TEST(JournalThinning, ForgetsTheOldestWhenTheJournalIsLargerThanItMayBe)
{
    test::JournalFolder folder;
    JournalLimits limits;
    limits.bytes = 40000;
    const auto journal = folder.journal(limits);
    std::mt19937 random(1);
    std::string noise(5000, '\0'); // incompressible
    for (int made = 1; made <= 50; ++made) {
        for (char& letter : noise)
            letter = static_cast<char>(random());
        ASSERT_TRUE(recordAt(*journal, made, noise));
    }

    const auto numbers = test::numbersIn(*journal);
    EXPECT_EQ(numbers.front(), 50);
    EXPECT_GE(numbers.size(), 6U);
    EXPECT_LE(numbers.size(), 8U);
    EXPECT_EQ(numbers.back(), 51 - static_cast<std::int64_t>(numbers.size()))
        << "the newest ones, without a gap";
    EXPECT_EQ(journal->bytesOf(50), noise);
    EXPECT_LE(journal->sizeOnDisk(), 70000U) << "what is forgotten takes no room";
}

TEST(JournalThinning, KeepsTheNewestHoweverLittleRoomThereMayBe)
{
    test::JournalFolder folder;
    JournalLimits limits;
    limits.bytes = 0;
    const auto journal = folder.journal(limits);

    for (std::size_t made = 1; made <= 5; ++made)
        ASSERT_TRUE(recordAt(*journal, 0, test::textOfLines(100, made, "w")));

    EXPECT_EQ(test::numbersIn(*journal), std::vector<std::int64_t>{5});
    EXPECT_EQ(journal->bytesOf(5), test::textOfLines(100, 5, "w"));
}

TEST(JournalThinning, OffersNoUndoAcrossAGap)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    recordAt(*journal, 0, "one");
    recordAt(*journal, 1, "two");
    recordAt(*journal, 2, "three");
    NewVersion foreign = test::version("four");
    foreign.kind = VersionKind::foreign;
    foreign.time = 20 * test::day;

    ASSERT_EQ(journal->undoable()->number, 3);
    journal->record(foreign);

    EXPECT_EQ(test::numbersIn(*journal), (std::vector<std::int64_t>{4, 3})) << "one an hour";
    EXPECT_FALSE(journal->undoable());
}

} // namespace quorvane::history
