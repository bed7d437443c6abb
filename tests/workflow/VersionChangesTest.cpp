#include "workflow/VersionChanges.h"

#include "history/Journal.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::workflow {

namespace {

class VersionChangesTest : public testing::Test {
protected:
    history::JournalVersion record(const std::string& bytes, const std::string& action = "Edit",
        history::VersionKind kind = history::VersionKind::action)
    {
        history::NewVersion version;
        version.kind = kind;
        if (kind != history::VersionKind::foreign) {
            version.program = "test";
            version.action = action;
        }
        version.bytes = bytes;
        return *journal->version(journal->record(version).value());
    }

    test::TemporaryFolder folder;
    std::unique_ptr<history::Journal> journal
        = history::Journal::open(folder.path("state"), folder.path("rules"), {}, test::silentLog());
};

} // namespace

TEST_F(VersionChangesTest, TheFirstVersionIsMadeOfNothing)
{
    const VersionChanges changes = changesOf(*journal, record("one"));
    EXPECT_FALSE(changes.since);
    EXPECT_FALSE(changes.problem);
    EXPECT_EQ(changes.before, "");
    EXPECT_EQ(changes.after, "one");
}

TEST_F(VersionChangesTest, ALaterVersionIsMadeOfTheOneBeforeItAsItWasMeant)
{
    history::NewVersion version;
    version.bytes = "cut";
    version.meant = "whole";
    journal->record(version);
    const VersionChanges changes = changesOf(*journal, record("two"));
    EXPECT_EQ(changes.since, 1);
    EXPECT_EQ(changes.before, "whole");
    EXPECT_EQ(changes.after, "two");
}

TEST_F(VersionChangesTest, AVersionWhoseForerunnersAreForgottenSaysSo)
{
    record("one");
    const history::JournalVersion second = record("two");
    journal->forgetBefore(second.number);
    const VersionChanges changes = changesOf(*journal, *journal->version(second.number));
    ASSERT_TRUE(changes.problem);
    EXPECT_EQ(
        *changes.problem, "Version 1, which came before, has been forgotten, and with it what changed.");
}

TEST_F(VersionChangesTest, IsComparedWithTheNewestOlderOneThatIsLeft)
{
    record("one");
    record("two");
    history::JournalVersion third = record("three");
    third.before = 99; // as if that one had been thinned out
    EXPECT_EQ(changesOf(*journal, third).since, 2);
}

TEST_F(VersionChangesTest, WordsTellAnActionFromItsUndoAndFromAnotherProgramsDoing)
{
    EXPECT_EQ(actionText(record("0", "", history::VersionKind::foreign)), "As found when the history began");
    EXPECT_EQ(actionText(record("1", "Delete 3 Rules")), "Delete 3 Rules");
    EXPECT_EQ(actionText(record("2", "Delete 3 Rules", history::VersionKind::undo)), "Undo Delete 3 Rules");
    EXPECT_EQ(actionText(record("3", "Delete 3 Rules", history::VersionKind::redo)), "Redo Delete 3 Rules");
    EXPECT_EQ(actionText(record("4", "", history::VersionKind::foreign)), "Changed by another program");
}

} // namespace quorvane::workflow
