#include "tests/workflow/ManyRulesDocument.h"

#include "history/Database.h"
#include "history/JournalPlace.h"

// Undo, redo and restore in documents of so many rules that a thread merges and writes them.

namespace quorvane::workflow {

namespace {

class ManyRulesStepsTest : public test::ManyRulesDocument {
protected:
    // Adds rules, whose versions are 2 and 3, and then keeps the thread busy.
    void addTwoBeforeOtherWork()
    {
        window->add("/mine");
        window->add("/wrong");
        document().waitUntilWritten();
        document().keepPresentVersion();
        ASSERT_EQ(document().work(), DocumentWork::recording);
    }
};

} // namespace

TEST_F(ManyRulesStepsTest, RestoresOnTheThread)
{
    window->add("/mine");
    document().waitUntilWritten();
    const rules::RuleRef kept = window->ruleWith("/7");
    EXPECT_TRUE(document().restore(1));
    document().waitUntilWritten();
    EXPECT_EQ(file(), test::lines(0, test::manyRules));
    EXPECT_FALSE(has("/mine"));
    EXPECT_EQ(window->ruleWith("/7"), kept);
    EXPECT_EQ(window->reloads, 1);
    EXPECT_TRUE(window->newsOf(Kind::merged).empty());
}

TEST_F(ManyRulesStepsTest, MergesAChangeMadeWhileAVersionIsRestored)
{
    window->add("/mine");
    document().waitUntilWritten();
    EXPECT_TRUE(document().restore(1));
    window->add("/later");
    document().waitUntilWritten();
    EXPECT_FALSE(has("/mine"));
    EXPECT_TRUE(has("/later"));
    EXPECT_EQ(linesInFile("/mine"), 0U);
    EXPECT_EQ(linesInFile("/later"), 1U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, UndoesAndRedoesWhatIsStillBeingWrittenWithoutWaiting)
{
    window->add("/mine");
    window->add("/wrong");
    ASSERT_TRUE(document().isWorking());
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().isWorking()) << "it has not waited";
    EXPECT_FALSE(has("/wrong"));
    EXPECT_TRUE(document().redo());
    EXPECT_TRUE(has("/wrong"));
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().undo());
    EXPECT_FALSE(has("/mine"));
    EXPECT_EQ(linesInFile("/mine") + linesInFile("/wrong"), 0U);

    document().waitUntilWritten();
    EXPECT_EQ(document().failure(), std::nullopt);
    expectFileHasTheRulesOfTheStore();
    EXPECT_TRUE(document().redo()) << "its version is known now";
    document().waitUntilWritten();
    EXPECT_EQ(linesInFile("/mine"), 1U);

    window.emplace(box, DocumentOwner{.background = &background});
    EXPECT_EQ(document().undoName(), "Add Rule");
    EXPECT_EQ(document().redoName(), "Add Rule");
    EXPECT_TRUE(document().redo());
    document().waitUntilWritten();
    EXPECT_EQ(linesInFile("/wrong"), 1U);
}

TEST_F(ManyRulesStepsTest, KeepsForeignRulesWhenWhatIsBeingWrittenIsUndone)
{
    window->add("/mine");
    EXPECT_TRUE(document().undo());
    box.writeUserRules(file() + test::fileLine("/theirs"));
    document().waitUntilWritten();
    document().takeForeignChanges();
    document().waitUntilWritten();
    EXPECT_TRUE(has("/theirs"));
    EXPECT_FALSE(has("/mine"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, UndoesAndRedoesAnActionOfAnEarlierRunOnTheThread)
{
    addAndRestart("/mine");
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().isWorking());
    EXPECT_TRUE(has("/mine")) << "the window's thread does not merge";
    document().waitUntilWritten();
    EXPECT_FALSE(has("/mine"));
    EXPECT_EQ(window->changes.size(), 1U) << "the window is told";
    expectFileHasTheRulesOfTheStore();
    window.emplace(box, DocumentOwner{.background = &background});
    EXPECT_TRUE(document().redo());
    document().waitUntilWritten();
    EXPECT_TRUE(has("/mine"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, KeepsAChangeMadeWhileAnActionIsUndone)
{
    addAndRestart("/mine");
    EXPECT_TRUE(document().undo());
    window->add("/later");
    window->tag("/mine", "wanted");
    document().waitUntilWritten();
    EXPECT_TRUE(has("/mine")) << "its tag was changed since";
    EXPECT_TRUE(has("/later"));
    EXPECT_EQ(linesInFile("/later"), 1U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, SaysThatAnActionCannotBeUndoneWhenOnlyTheThreadFindsItDamaged)
{
    addAndRestart("/mine");
    EXPECT_TRUE(document().undo());
    const history::JournalPlace place(box.folder.path("state"), box.locations.userRulesFile());
    history::Database database(place.databaseFile());
    history::Statement(database, "UPDATE content SET frame = x'00'").run();
    document().waitUntilWritten();
    EXPECT_EQ(window->newsOf(Kind::journal), std::vector<std::string>{"Version 2 can no longer be read."});
    EXPECT_TRUE(has("/mine"));
    EXPECT_FALSE(document().undo());
}

TEST_F(ManyRulesStepsTest, UndoesOneActionAlsoBehindThoseThatCouldNotBeWritten)
{
    {
        const test::SystemCallHook full(test::SystemCall::write, failingForTheRules(1000));
        window->add("/first");
        document().waitUntilWritten();
        ASSERT_TRUE(document().failure());
    }
    window->add("/second");
    window->add("/third");
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(has("/second")) << "it would be undone with those that become one version";
    document().waitUntilWritten();
    EXPECT_TRUE(has("/first"));
    EXPECT_TRUE(has("/second"));
    EXPECT_FALSE(has("/third"));
    expectFileHasTheRulesOfTheStore();

    window.emplace(box, DocumentOwner{.background = &background});
    EXPECT_EQ(document().redoName(), std::nullopt);
    EXPECT_TRUE(document().undo());
    document().waitUntilWritten();
    EXPECT_FALSE(has("/second"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, UndoesWithWhatAnotherProgramHasWrittenSince)
{
    window->add("/mine");
    document().waitUntilWritten();
    box.writeUserRules(
        test::lines(0, test::manyRules) + test::fileLine("/mine") + test::fileLine("/foreign"));
    EXPECT_TRUE(document().undo());
    document().waitUntilWritten();
    EXPECT_FALSE(has("/mine"));
    EXPECT_TRUE(has("/foreign"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, UndoesBehindOtherWorkWithoutWaitingForIt)
{
    ASSERT_NO_FATAL_FAILURE(addTwoBeforeOtherWork());
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().redo());
    EXPECT_EQ(document().work(), DocumentWork::recording) << "it has not waited";
    EXPECT_TRUE(has("/wrong"));
    EXPECT_EQ(document().undoName(), std::nullopt) << "which one it is shows only then";
    EXPECT_EQ(document().redoName(), std::nullopt);
    document().waitUntilWritten();
    EXPECT_FALSE(has("/wrong"));
    EXPECT_TRUE(has("/mine"));
    EXPECT_EQ(window->changes.size(), 3U) << "the window is told of each";
    EXPECT_EQ(document().undoName(), "Add Rule");
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, UndoesBehindAForeignChangeThatIsBeingRead)
{
    window->add("/mine");
    document().waitUntilWritten();
    box.writeUserRules(
        test::lines(0, test::manyRules) + test::fileLine("/mine") + test::fileLine("/foreign"));
    document().takeForeignChanges();
    EXPECT_TRUE(document().undo());
    EXPECT_EQ(document().work(), DocumentWork::reading);
    EXPECT_TRUE(has("/mine"));
    document().waitUntilWritten();
    EXPECT_FALSE(has("/mine"));
    EXPECT_TRUE(has("/foreign"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, MakesALaterChangeBehindTheUndoThatWasAskedForFirst)
{
    window->add("/mine");
    document().waitUntilWritten();
    document().keepPresentVersion();
    EXPECT_TRUE(document().undo());
    window->add("/later");
    EXPECT_FALSE(has("/mine"));
    EXPECT_TRUE(has("/later"));
    document().waitUntilWritten();
    EXPECT_EQ(document().undoName(), "Add Rule");
    EXPECT_EQ(document().redoName(), std::nullopt);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, SaysWhenThereWasNothingToUndoBehindOtherWork)
{
    document().keepPresentVersion();
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().redo());
    document().waitUntilWritten();
    EXPECT_EQ(window->newsOf(Kind::journal),
        (std::vector<std::string>{"There is nothing to undo.", "There is nothing to redo."}));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, RestoresBehindOtherWorkWithoutWaitingForIt)
{
    ASSERT_NO_FATAL_FAILURE(addTwoBeforeOtherWork());
    EXPECT_TRUE(document().restore(2));
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().redo());
    EXPECT_EQ(document().work(), DocumentWork::recording) << "it has not waited";
    document().waitUntilWritten();
    EXPECT_TRUE(has("/mine"));
    EXPECT_FALSE(has("/wrong"));
    EXPECT_EQ(document().undoName(), "Restore Version 2");
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesStepsTest, SaysWhenAVersionCannotBeRestoredBehindOtherWork)
{
    document().keepPresentVersion();
    EXPECT_TRUE(document().restore(9));
    document().waitUntilWritten();
    EXPECT_EQ(window->newsOf(Kind::journal), std::vector<std::string>{"Version 9 can no longer be read."});
    expectFileHasTheRulesOfTheStore();
}

} // namespace quorvane::workflow
