#include "history/Journal.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace quorvane::history {

TEST(Journal, GivesBackTheBytesOfEachVersion)
{
    test::JournalFolder folder;
    const std::string texts[] = {"one\n", "one\ntwo\n", std::string("\0\xFF\r\n", 4), "", "one\n"};
    const auto journal = folder.journal();

    for (const std::string& text : texts)
        ASSERT_TRUE(journal->record(test::version(text))) << journal->problem().value_or("");

    const auto reopened = folder.journal();
    for (std::int64_t number = 1; number <= 5; ++number)
        EXPECT_EQ(reopened->bytesOf(number), texts[number - 1]) << number;
    EXPECT_EQ(test::numbersIn(*reopened), (std::vector<std::int64_t>{5, 4, 3, 2, 1}));
}

TEST(Journal, ItsMarkChangesWithWhatOthersDoAlone)
{
    test::JournalFolder folder;
    const auto watching = folder.journal();
    EXPECT_EQ(watching->changeMark(), 0);
    const auto other = folder.journal();
    other->record(test::version("one"));
    const std::int64_t first = watching->changeMark();
    EXPECT_NE(first, 0);
    EXPECT_EQ(watching->changeMark(), first);
    other->record(test::version("two"));
    EXPECT_NE(watching->changeMark(), first);
}

TEST(Journal, KnowsOfAVersionWhatWasRecorded)
{
    test::JournalFolder folder;
    NewVersion undo = test::version("abc");
    undo.kind = VersionKind::undo;
    undo.of = 1;
    undo.rules = 4;
    undo.added = 3;
    undo.removed = 2;
    undo.changed = 1;
    undo.time = 1234567890;
    NewVersion foreign;
    foreign.kind = VersionKind::foreign;
    foreign.bytes = "def";
    foreign.time = 1234567891;
    NewVersion earlier = test::version("x");
    earlier.time = 1234567889;

    const auto journal = folder.journal();
    journal->record(earlier);
    journal->record(undo);
    journal->record(foreign);
    const auto second = folder.journal()->version(2);
    const auto third = folder.journal()->newest();

    ASSERT_TRUE(second && third);
    EXPECT_EQ(second->number, 2);
    EXPECT_EQ(second->time, 1234567890);
    EXPECT_EQ(second->program, "test");
    EXPECT_EQ(second->action, "Change rules");
    EXPECT_EQ(second->kind, VersionKind::undo);
    EXPECT_EQ(second->of, 1);
    EXPECT_EQ(second->before, 1);
    EXPECT_EQ(second->state, VersionState::done);
    EXPECT_EQ(second->rules, 4U);
    EXPECT_EQ(second->added, 3U);
    EXPECT_EQ(second->removed, 2U);
    EXPECT_EQ(second->changed, 1U);
    EXPECT_EQ(second->bytes, 3U);
    EXPECT_EQ(second->sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_FALSE(second->hasMeant);
    EXPECT_TRUE(second->isReadable);
    EXPECT_EQ(third->number, 3);
    EXPECT_EQ(third->kind, VersionKind::foreign);
    EXPECT_FALSE(third->program);
    EXPECT_FALSE(third->action);
}

TEST(Journal, MakesNothingOnDiskUntilAVersionIsRecorded)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();

    EXPECT_TRUE(journal->versions().empty());
    EXPECT_FALSE(journal->newest());
    EXPECT_TRUE(journal->underWay().empty());
    EXPECT_FALSE(journal->bytesOf(1));
    EXPECT_FALSE(journal->undoable());
    EXPECT_FALSE(journal->problem());
    EXPECT_FALSE(std::filesystem::exists(folder.state()));
}

TEST(Journal, KeepsTheRulesAsMeantBesideTheBytesThatCannotHoldThem)
{
    test::JournalFolder folder;
    NewVersion cut = test::version("rule \"a\xC3");
    cut.meant = "rule \"a\xC3\xA4\"\n";
    NewVersion same = test::version("rule\n");
    same.meant = "rule\n";
    const auto journal = folder.journal();

    const auto first = journal->record(cut);
    const auto second = journal->record(same);

    ASSERT_TRUE(first && second);
    EXPECT_EQ(journal->bytesOf(*first), cut.bytes.bytes());
    EXPECT_EQ(journal->meantOf(*first), cut.meant->bytes());
    EXPECT_TRUE(journal->version(*first)->hasMeant);
    EXPECT_EQ(journal->meantOf(*second), "rule\n");
    EXPECT_FALSE(journal->version(*second)->hasMeant) << "the bytes hold them";
}

TEST(Journal, HasAVersionUnderWayFromBeginToFinishAndAMarkerAsLong)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    EXPECT_FALSE(folder.mayBeUnderWay());

    const auto number = journal->begin(test::version("one\n"));

    ASSERT_TRUE(number);
    EXPECT_TRUE(folder.mayBeUnderWay());
    ASSERT_EQ(folder.journal()->underWay().size(), 1U);
    EXPECT_EQ(folder.journal()->underWay().front().number, *number);
    EXPECT_EQ(folder.journal()->bytesOf(*number), "one\n");

    EXPECT_TRUE(folder.journal()->finish(*number, VersionState::recovered));
    EXPECT_FALSE(folder.mayBeUnderWay());
    EXPECT_TRUE(journal->underWay().empty());
    EXPECT_EQ(journal->version(*number)->state, VersionState::recovered);
}

TEST(Journal, KeepsTheMarkerWhileAnotherVersionIsUnderWay)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    const auto first = journal->begin(test::version("one\n"));
    const auto second = journal->begin(test::version("two\n"));
    ASSERT_TRUE(first && second);

    EXPECT_EQ(journal->underWay().front().number, *second) << "newest first";
    EXPECT_TRUE(journal->finish(*first, VersionState::done));
    EXPECT_TRUE(folder.mayBeUnderWay());
    EXPECT_TRUE(journal->finish(*second, VersionState::done));
    EXPECT_FALSE(folder.mayBeUnderWay());
}

TEST(Journal, CountsOlderVersionsUnderWayAsRecoveredWhenOneIsFinished)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    const auto first = journal->begin(test::version("one\n"));
    const auto second = journal->begin(test::version("two\n"));
    ASSERT_TRUE(first && second);

    EXPECT_TRUE(journal->finish(*second, VersionState::done));
    EXPECT_EQ(journal->version(*first)->state, VersionState::recovered);
    EXPECT_EQ(journal->version(*second)->state, VersionState::done);
    EXPECT_FALSE(folder.mayBeUnderWay());
}

TEST(Journal, RemembersWhatAFailedWriteHasLeftForAsLongAsAVersionIsUnderWay)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    const auto number = journal->begin(test::version("one\ntwo\n"));
    ASSERT_TRUE(number);
    EXPECT_FALSE(journal->isLeft("two\n")) << "nothing has failed";

    journal->noteLeft("two\n");
    EXPECT_TRUE(folder.journal()->isLeft("two\n"));
    EXPECT_FALSE(folder.journal()->isLeft("one\n"));

    journal->finish(*number, VersionState::recovered);
    EXPECT_FALSE(folder.journal()->isLeft("two\n"));
}

TEST(Journal, ClearsAMarkerThatStandsForNothingWithTheNextVersion)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    journal->record(test::version("one\n"));
    ASSERT_TRUE(folder.place().makeMarker());

    journal->record(test::version("two\n"));

    EXPECT_FALSE(folder.mayBeUnderWay());
}

TEST(Journal, FinishesNoVersionThatItDoesNotHave)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    journal->record(test::version("one\n"));

    EXPECT_FALSE(journal->finish(7, VersionState::done));
    EXPECT_FALSE(journal->bytesOf(7));
    EXPECT_FALSE(journal->meantOf(7));
    EXPECT_FALSE(journal->version(7));
}

TEST(Journal, AbandonsAVersionUnderWayAsIfItHadNeverBeen)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    const auto first = journal->record(test::version("one\n"));
    const auto second = journal->begin(test::version("two\n"));
    const auto third = journal->record(test::version("three\n"));
    ASSERT_TRUE(first && second && third);

    EXPECT_FALSE(journal->abandon(*first)) << "it is done";
    EXPECT_TRUE(journal->abandon(*second));

    EXPECT_FALSE(folder.mayBeUnderWay());
    EXPECT_EQ(test::numbersIn(*journal), (std::vector<std::int64_t>{*third, *first}));
    EXPECT_EQ(journal->newest()->before, *first);
    EXPECT_EQ(journal->bytesOf(*third), "three\n");
    EXPECT_EQ(journal->undoable()->number, *third);
}

TEST(Journal, TakesNextToNoRoomForTheSameBytesAgain)
{
    test::JournalFolder folder;
    const std::string text = test::textOfLines(21000, 0, "r");
    const auto journal = folder.journal();
    journal->record(test::version(text));
    const std::uint64_t before = journal->sizeOnDisk();

    for (int time = 0; time < 10; ++time)
        ASSERT_TRUE(journal->record(test::version(text)));

    EXPECT_LE(journal->sizeOnDisk(), before + 4096);
    EXPECT_EQ(journal->bytesOf(11), text);
}

TEST(Journal, TakesAPercentAtMostForALineThatChanged)
{
    test::JournalFolder folder;
    const std::size_t lines = 30000;
    const auto journal = folder.journal();
    const std::string first = test::textOfLines(lines, 0, "r");
    ASSERT_GT(first.size(), std::size_t{1} << 20U);
    journal->record(test::version(first));
    const std::uint64_t before = journal->sizeOnDisk();

    const std::string second
        = test::textOfLines(lines, lines / 2, "a word longer than the one that was there");
    NewVersion hinted = test::version(second);
    hinted.previousBytes = first;
    ASSERT_TRUE(journal->record(hinted));

    EXPECT_LE(journal->sizeOnDisk() - before, second.size() / 100);
    EXPECT_EQ(journal->bytesOf(2), second);
}

TEST(Journal, IgnoresAHintThatIsNotWhatTheNewestVersionHolds)
{
    test::JournalFolder folder;
    const std::string first = test::textOfLines(1000, 0, "r");
    const std::string second = test::textOfLines(1000, 5, "w");
    const std::string wrong = test::textOfLines(1000, 7, "c");
    const auto journal = folder.journal();
    journal->record(test::version(first));

    NewVersion hinted = test::version(second);
    hinted.previousBytes = wrong;
    ASSERT_TRUE(journal->record(hinted));

    EXPECT_EQ(journal->bytesOf(2), second);
}

TEST(Journal, HoldsAThousandVersionsOfAChangingText)
{
    test::JournalFolder folder;
    constexpr std::int64_t count = 1000;
    std::string text = test::textOfLines(21000, 0, "r");
    ASSERT_GT(text.size(), std::size_t{1} << 20U);
    const auto journal = folder.journal();
    std::map<std::int64_t, std::string> samples;
    std::uint64_t firstSize = 0;
    for (std::int64_t number = 1; number <= count; ++number) {
        const std::string previous = text;
        const auto changed = static_cast<std::size_t>(number) * 7919 * 64 % text.size();
        text.insert(changed, "changed by " + std::to_string(number));
        NewVersion next = test::version(text);
        if (number % 20 != 0)
            next.previousBytes = previous; // a hint is not always there
        ASSERT_EQ(journal->record(next), number) << journal->problem().value_or("");
        if (number % 37 == 0)
            samples[number] = text;
        if (number == 1)
            firstSize = journal->sizeOnDisk();
    }

    for (const auto& [number, sample] : samples)
        EXPECT_TRUE(journal->bytesOf(number) == sample) << number;
    EXPECT_EQ(journal->versions().size(), static_cast<std::size_t>(count));
    EXPECT_LE(journal->sizeOnDisk(), firstSize * (count / 50 + 5))
        << "a whole one in fifty, the others small";
}

TEST(Journal, KeepsVersionsOfDifferentFilesApart)
{
    test::JournalFolder folder;
    platform::Log log({});
    const auto rules = folder.journal();
    const auto list = Journal::open(folder.state(), folder.folder().path("list.plist"), {}, log);

    rules->record(test::version("rules"));
    list->begin(test::version("list"));

    EXPECT_EQ(rules->newest()->bytes, 5U);
    EXPECT_EQ(list->bytesOf(1), "list");
    EXPECT_FALSE(folder.mayBeUnderWay());
    EXPECT_TRUE(Journal::mayBeUnderWay(folder.state(), folder.folder().path("list.plist")));
}

TEST(Journal, KnowsAFileByItsRealPath)
{
    test::JournalFolder folder;
    platform::Log log({});
    folder.folder().write("real/rules.rc", "one\n");
    std::filesystem::create_directory_symlink(folder.folder().path("real"), folder.folder().path("link"));
    Journal::open(folder.state(), folder.folder().path("real/rules.rc"), {}, log)
        ->record(test::version("one\n"));

    for (const char* name : {"link/rules.rc", "real/../link/./rules.rc"})
        EXPECT_TRUE(Journal::open(folder.state(), folder.folder().path(name), {}, log)->newest()) << name;
}

TEST(Journal, ForgetsVersionsBeforeOneAndKeepsTheLaterOnesReadable)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    for (std::size_t number = 1; number <= 120; ++number)
        journal->record(test::version(test::textOfLines(200, number, "changed")));

    EXPECT_TRUE(journal->forgetBefore(70));

    EXPECT_EQ(test::numbersIn(*journal).back(), 70);
    for (std::int64_t number = 70; number <= 120; ++number)
        EXPECT_EQ(
            journal->bytesOf(number), test::textOfLines(200, static_cast<std::size_t>(number), "changed"));
    EXPECT_FALSE(journal->bytesOf(69));
}

TEST(Journal, ForgetsAllButTheNewestAndTakesNoMoreRoomThanThatOne)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    journal->record(test::version(test::textOfLines(5000, 0, "changed")));
    const std::uint64_t one = journal->sizeOnDisk();
    for (std::size_t number = 2; number <= 60; ++number)
        journal->record(test::version(test::textOfLines(5000, number, "changed")));

    EXPECT_TRUE(journal->forgetAll());

    EXPECT_EQ(test::numbersIn(*journal), (std::vector<std::int64_t>{60}));
    EXPECT_EQ(journal->bytesOf(60), test::textOfLines(5000, 60, "changed"));
    EXPECT_LE(journal->sizeOnDisk(), one + 4096);
    EXPECT_EQ(journal->record(test::version("next")), 61) << "numbers are never given twice";
}

TEST(Journal, ForgetsNoVersionUnderWay)
{
    test::JournalFolder folder;
    const auto journal = folder.journal();
    journal->begin(test::version("one\n"));
    journal->record(test::version("two\n"));
    journal->record(test::version("three\n"));

    EXPECT_TRUE(journal->forgetAll());

    EXPECT_EQ(test::numbersIn(*journal), (std::vector<std::int64_t>{3, 1}));
    EXPECT_EQ(journal->bytesOf(1), "one\n");
}

} // namespace quorvane::history
