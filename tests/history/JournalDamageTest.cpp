#include "history/Journal.h"

#include "history/Database.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace quorvane::history {

namespace {

// A journal of a few versions, one of them under way, some with intended rules.
class UsedJournal : public test::JournalFolder {
public:
    UsedJournal()
    {
        const auto made = journal();
        for (std::size_t number = 1; number <= count; ++number) {
            const std::string text = textOf(number);
            NewVersion next = test::version(text);
            const std::string meant = text + "meant";
            if (number % 4 == 0)
                next.meant = meant;
            EXPECT_TRUE(number == count ? made->begin(next) : made->record(next));
        }
    }

    static std::string textOf(std::size_t number)
    {
        return test::textOfLines(40, number, std::to_string(number));
    }

    std::string database() const { return place().databaseFile(); }

    void execute(const char* sql) const { Database(database()).execute(sql); }

    std::vector<std::string> filesSetAside() const
    {
        std::vector<std::string> names;
        for (const auto& file : std::filesystem::directory_iterator(state()))
            if (file.path().string().find(".damaged") != std::string::npos
                && !file.path().string().ends_with("-journal"))
                names.push_back(file.path());
        return names;
    }

    static constexpr std::size_t count = 12;
};

// Checks that every query returns, and that a new version can be recorded and read back.
void expectUsable(UsedJournal& folder, const std::string& why)
{
    const auto journal = folder.journal();
    for (const JournalVersion& version : journal->versions()) {
        // Reading the newest reads all frames; one more has intended rules.
        if (version.number != UsedJournal::count && version.number != 4)
            continue;
        const auto bytes = journal->bytesOf(version.number);
        EXPECT_TRUE(!bytes || bytes->size() == version.bytes) << why;
        journal->meantOf(version.number);
    }
    journal->newest();
    journal->underWay();
    journal->undoable();
    journal->redoable();
    const std::string last = UsedJournal::textOf(UsedJournal::count);
    const std::string text = last + "new\n";
    NewVersion next = test::version(text);
    next.previousBytes = last;
    const auto number = journal->record(next);
    if (!number) {
        EXPECT_TRUE(journal->problem()) << why;
        return;
    }
    EXPECT_TRUE(folder.journal()->bytesOf(*number) == text) << why;
}

} // namespace

TEST(JournalDamage, AtAnyTenthByteLosesNoNewVersion)
{
    UsedJournal original;
    const std::string bytes = test::TemporaryFolder::contents(original.database());
    std::size_t unused = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 10) {
        for (const auto& file : std::filesystem::directory_iterator(original.state()))
            std::filesystem::remove(file);
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(~damaged[at]);
        std::ofstream(original.database(), std::ios::binary) << damaged;
        expectUsable(original, "damaged at " + std::to_string(at));
        unused += original.journal()->newest() ? 0U : 1U;
    }
    EXPECT_EQ(unused, 0U);
}

TEST(JournalDamage, ByACutAnywhereLosesNoNewVersion)
{
    UsedJournal original;
    const std::string bytes = test::TemporaryFolder::contents(original.database());
    for (std::size_t length = 0; length < bytes.size(); length += 97) {
        for (const auto& file : std::filesystem::directory_iterator(original.state()))
            std::filesystem::remove(file);
        std::ofstream(original.database(), std::ios::binary) << bytes.substr(0, length);
        expectUsable(original, "cut to " + std::to_string(length));
        EXPECT_TRUE(original.journal()->newest()) << length;
    }
}

TEST(JournalDamage, SetsTheJournalAsideAndTellsItOnce)
{
    UsedJournal folder;
    std::ofstream(folder.database(), std::ios::binary)
        << "no data base at all, and long enough to be taken for one";
    const auto journal = folder.journal();

    EXPECT_EQ(journal->record(test::version("new")), 1);

    const auto notice = journal->takeNotice();
    ASSERT_TRUE(notice);
    ASSERT_EQ(folder.filesSetAside().size(), 1U);
    EXPECT_NE(notice->find(folder.filesSetAside().front()), std::string::npos) << *notice;
    EXPECT_EQ(test::TemporaryFolder::contents(folder.filesSetAside().front()).substr(0, 12), "no data base");
    EXPECT_FALSE(journal->takeNotice());
    EXPECT_FALSE(journal->problem());
    EXPECT_EQ(folder.journal()->bytesOf(1), "new");
}

TEST(JournalDamage, FoundWhileReadingSetsTheJournalAsideAsWell)
{
    UsedJournal folder;
    folder.execute("DROP TABLE content");
    const auto journal = folder.journal();

    EXPECT_TRUE(journal->versions().empty());

    EXPECT_TRUE(journal->takeNotice());
    EXPECT_EQ(folder.filesSetAside().size(), 1U);
    EXPECT_EQ(journal->record(test::version("new")), 1);
}

TEST(JournalDamage, ThatAnotherProgramHasSetAsideMeanwhileIsNoProblem)
{
    // given a journal that is open while its file is damaged
    UsedJournal folder;
    const auto journal = folder.journal();
    EXPECT_EQ(journal->versions().size(), UsedJournal::count);
    std::fstream(folder.database(), std::ios::in | std::ios::out | std::ios::binary)
        << std::string(4096, 'x');

    // when another program finds the damage, sets the file aside and begins anew
    const auto other = folder.journal();
    EXPECT_EQ(other->record(test::version("new")), 1);
    ASSERT_TRUE(other->takeNotice());

    // then the open one reads the new journal, and there is nothing more to set aside
    EXPECT_EQ(journal->bytesOf(1), "new");
    EXPECT_FALSE(journal->problem());
    EXPECT_FALSE(journal->takeNotice());
    EXPECT_EQ(folder.filesSetAside().size(), 1U);
}

TEST(JournalDamage, OfOneFrameMakesUnreadableOnlyWhatIsPackedAgainstIt)
{
    UsedJournal folder;
    folder.execute("UPDATE content SET frame = zeroblob(length(frame)) WHERE number ="
                   " (SELECT bytes FROM version WHERE number = 10)");
    const auto journal = folder.journal();

    EXPECT_FALSE(journal->bytesOf(10));
    EXPECT_TRUE(journal->problem());

    EXPECT_EQ(journal->bytesOf(9), UsedJournal::textOf(9));
    EXPECT_TRUE(journal->version(9)->isReadable);
    EXPECT_FALSE(journal->version(10)->isReadable);
    EXPECT_FALSE(journal->version(11)->isReadable);
    EXPECT_FALSE(journal->undoable()) << "its contents are gone";
    EXPECT_TRUE(folder.filesSetAside().empty());
    const auto next = journal->record(test::version("new"));
    ASSERT_TRUE(next);
    EXPECT_EQ(journal->bytesOf(*next), "new");
}

TEST(JournalDamage, OfAFrameNobodyHasReadIsNotBuiltUpon)
{
    UsedJournal folder;
    folder.execute("UPDATE content SET frame = zeroblob(length(frame)) WHERE number = 1");
    const std::string last = UsedJournal::textOf(UsedJournal::count);
    const std::string text = last + "new\n";
    NewVersion next = test::version(text);
    next.previousBytes = last; // so that nothing needs to be unpacked

    const auto number = folder.journal()->record(next);

    ASSERT_TRUE(number);
    EXPECT_EQ(folder.journal()->bytesOf(*number), text);
    EXPECT_FALSE(folder.journal()->bytesOf(UsedJournal::count));
}

TEST(JournalDamage, DoesNotSpreadWhenVersionsAreForgotten)
{
    UsedJournal folder;
    folder.execute("UPDATE content SET frame = zeroblob(length(frame)) WHERE number = 3");
    const auto journal = folder.journal();
    const auto next = journal->record(test::version("new"));
    ASSERT_TRUE(next);

    EXPECT_TRUE(journal->forgetBefore(5));

    EXPECT_FALSE(journal->bytesOf(5));
    EXPECT_EQ(journal->bytesOf(*next), "new");
}

TEST(JournalDamage, ThatMakesCirclesIsFound)
{
    UsedJournal folder;
    folder.execute("UPDATE content SET base = 9 WHERE number = 4");
    const auto journal = folder.journal();

    EXPECT_FALSE(journal->bytesOf(9));
    EXPECT_EQ(journal->bytesOf(1), UsedJournal::textOf(1));
    EXPECT_TRUE(journal->record(test::version("new")));
    EXPECT_TRUE(journal->forgetBefore(8));
    EXPECT_TRUE(journal->forgetAll());
    EXPECT_EQ(journal->bytesOf(13), "new");
}

TEST(JournalDamage, OfASizeMakesNoRoomForIt)
{
    UsedJournal folder;
    folder.execute(
        "UPDATE content SET size = 9000000000000000000 WHERE number = 4; UPDATE content SET size = -1"
        " WHERE number = 5");
    const auto journal = folder.journal();

    EXPECT_FALSE(journal->bytesOf(4));
    EXPECT_FALSE(journal->bytesOf(5));
    EXPECT_TRUE(journal->record(test::version("new")));
}

TEST(JournalDamage, OfAKindOrStateThatThereIsNotIsFound)
{
    for (const char* sql : {"UPDATE version SET kind = 4 WHERE number = 3",
             "UPDATE version SET kind = -1 WHERE number = 3", "UPDATE version SET state = 3 WHERE number = 3",
             "UPDATE version SET state = -1 WHERE number = 3"}) {
        UsedJournal folder;
        folder.execute(sql);
        EXPECT_TRUE(folder.journal()->versions().empty()) << sql;
        EXPECT_EQ(folder.filesSetAside().size(), 1U) << sql;
    }
    UsedJournal folder;
    folder.execute("UPDATE version SET kind = 3, state = 2 WHERE number = 3");
    EXPECT_EQ(folder.journal()->version(3)->kind, VersionKind::foreign);
    EXPECT_EQ(folder.journal()->version(3)->state, VersionState::recovered);
}

TEST(JournalDamage, OfWhatWasMeantMakesAVersionUnreadable)
{
    UsedJournal folder;
    ASSERT_TRUE(folder.journal()->version(4)->isReadable);
    folder.execute(
        "UPDATE content SET damaged = 1 WHERE number = (SELECT meant FROM version WHERE number = 4)");
    EXPECT_FALSE(folder.journal()->version(4)->isReadable);
    EXPECT_TRUE(folder.journal()->version(3)->isReadable);
    folder.execute("DELETE FROM content WHERE number = (SELECT bytes FROM version WHERE number = 2)");
    EXPECT_FALSE(folder.journal()->version(2)->isReadable) << "its contents are missing";
}

TEST(JournalDamage, IsKeptNineTimesWithTheRollbackJournal)
{
    UsedJournal folder;
    for (int time = 1; time <= 9; ++time) {
        std::ofstream(folder.database(), std::ios::binary) << "damaged for time " + std::to_string(time);
        EXPECT_TRUE(folder.journal()->record(test::version("new"))) << time;
    }
    EXPECT_EQ(folder.filesSetAside().size(), 9U);
    const std::string base = folder.database().substr(0, folder.database().rfind('.'));
    EXPECT_EQ(test::TemporaryFolder::contents(base + ".damaged").substr(0, 18), "damaged for time 1");
    EXPECT_EQ(test::TemporaryFolder::contents(base + ".damaged.9").substr(0, 18), "damaged for time 9");
    EXPECT_TRUE(std::filesystem::exists(base + ".damaged-journal"));
    EXPECT_TRUE(std::filesystem::exists(base + ".damaged.9-journal"));

    std::ofstream(folder.database(), std::ios::binary) << "damaged for the tenth time";
    const auto journal = folder.journal();
    EXPECT_FALSE(journal->record(test::version("new")));
    EXPECT_TRUE(journal->problem());
    EXPECT_EQ(folder.filesSetAside().size(), 9U) << "somebody should look at them";
}

TEST(JournalFormat, ThatNoProgramHasIsDamage)
{
    for (const char* number : {"1001", "-1", "0"}) {
        UsedJournal folder;
        folder.execute(("PRAGMA user_version = " + std::string(number)).c_str());
        EXPECT_TRUE(folder.journal()->record(test::version("new"))) << number;
        EXPECT_EQ(folder.filesSetAside().size(), 1U) << number;
    }
    UsedJournal folder;
    folder.execute("PRAGMA user_version = 1000");
    EXPECT_FALSE(folder.journal()->record(test::version("new")));
    EXPECT_TRUE(folder.filesSetAside().empty());
}

TEST(JournalFormat, OfANewerProgramIsLeftAlone)
{
    UsedJournal folder;
    folder.execute("PRAGMA user_version = 2");
    const std::string before = test::TemporaryFolder::contents(folder.database());
    const auto journal = folder.journal();

    EXPECT_FALSE(journal->begin(test::version("new")));
    ASSERT_TRUE(journal->problem());
    EXPECT_NE(journal->problem()->find("newer version"), std::string::npos);
    EXPECT_TRUE(journal->versions().empty());
    EXPECT_FALSE(journal->forgetAll());
    EXPECT_EQ(test::TemporaryFolder::contents(folder.database()), before);
    EXPECT_TRUE(folder.filesSetAside().empty());
}

} // namespace quorvane::history
