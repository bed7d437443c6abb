#include "workflow/RulesDocument.h"
#include "history/Database.h"
#include "history/JournalPlace.h"
#include "tests/support/LaterWork.h"
#include "tests/workflow/DocumentSandbox.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

std::string line(const std::string& path, const std::string& tag = "", const std::string& process = "/bin/sh")
{
    return "allow prefix \"" + path + "\" \"" + process + "\" r \"" + tag + "\" \"\" \"0\"\n";
}

class RulesDocumentTest : public testing::Test {
protected:
    std::string file() const { return test::TemporaryFolder::contents(box.locations.userRulesFile()); }
    std::vector<history::JournalVersion> versions() const
    {
        return history::Journal::open(
            box.folder.path("state"), box.locations.userRulesFile(), {}, test::silentLog())
            ->versions();
    }
    // As a broken disk would.
    void damageAllVersions() const
    {
        const history::JournalPlace place(box.folder.path("state"), box.locations.userRulesFile());
        history::Database database(place.databaseFile());
        history::Statement(database, "UPDATE content SET frame = x'00'").run();
    }

    test::StoreSandbox box;
};

using Kind = DocumentNews::Kind;

// A document that writes later, once its versions are damaged; the first is of "/a/", the second added "/b/".
class DamagedDocumentTest : public RulesDocumentTest {
protected:
    DamagedDocumentTest()
    {
        box.writeUserRules(line("/a/"));
        window.emplace(box, DocumentOwner{.background = &background});
        window->add("/b/");
    }
    void restoreDamaged()
    {
        damageAllVersions();
        EXPECT_TRUE(window->document->restore(1));
    }

    test::LaterWork background;
    std::optional<test::DocumentAtWork> window;
};

} // namespace

TEST_F(RulesDocumentTest, AChangeIsInStoreFileAndJournalWhenItReturns)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    const ChangeResult result = window.add("/b/");
    EXPECT_FALSE(result.failure);
    EXPECT_EQ(file(), line("/a/") + line("/b/"));
    EXPECT_EQ(window.run.g_dirty, 1);
    EXPECT_TRUE(window.run.internalWrite);
    const auto kept = versions();
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_EQ(kept[0].action, "Add Rule");
    EXPECT_EQ(kept[0].program, "test");
    EXPECT_EQ(kept[0].rules, 2U);
    EXPECT_EQ(kept[0].added, 1U);
    EXPECT_EQ(kept[0].state, history::VersionState::done);
    EXPECT_EQ(kept[1].program, std::nullopt); // the original file
    EXPECT_EQ(kept[1].bytes, line("/a/").size());
}

TEST_F(RulesDocumentTest, ALongFileIsWrittenInTheBackgroundAlsoWhenNoRuleIsLeft)
{
    std::string text;
    constexpr std::uint64_t manyRules = 5'001;
    for (std::uint64_t rule = 0; rule < manyRules; ++rule)
        text += line("/" + std::to_string(rule) + "/");
    box.writeUserRules(text);
    test::LaterWork background;
    test::DocumentAtWork window(box, DocumentOwner{.background = &background});
    window.document->perform(deletionOf(*window.store, window.store->userRules()), {"Delete Rules"});
    EXPECT_EQ(window.store->storedRules(), 0U);
    EXPECT_EQ(file(), text) << "the window's thread does not write";
    background.wait();
    EXPECT_EQ(file(), "");
    EXPECT_EQ(versions()[0].removed, manyRules);
    EXPECT_TRUE(window.document->undo());
    background.wait();
    EXPECT_EQ(file(), text);
    EXPECT_EQ(versions()[0].added, manyRules);
}

TEST_F(RulesDocumentTest, TheFirstVersionCountsTheRulesOfTheFileAsFound)
{
    box.writeUserRules(line("/a/") + "; a comment\n" + line("/a/") + "watch path \"/w\" \"any\" r\n");
    test::DocumentAtWork window(box);
    window.add("/b/");
    ASSERT_EQ(versions().size(), 2U);
    EXPECT_EQ(versions()[1].rules, 2U);
    EXPECT_EQ(versions()[1].added, 2U);
    EXPECT_EQ(versions()[1].removed, 0U);
}

TEST_F(RulesDocumentTest, TheFirstVersionCountsWhatAnotherProgramHasWrittenSinceTheRead)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    box.writeUserRules(line("/a/") + line("/foreign/1") + line("/foreign/2"));
    window.add("/b/");
    ASSERT_EQ(versions().size(), 2U);
    EXPECT_EQ(versions()[1].rules, 3U);
    EXPECT_EQ(versions()[1].added, 3U);
}

TEST_F(RulesDocumentTest, AFileThatIsMissingIsMadeForOwnerAndGroup)
{
    test::DocumentAtWork window(box);
    EXPECT_FALSE(window.add("/b/").failure);
    EXPECT_EQ(file(), line("/b/"));
    struct stat status { };
    ASSERT_EQ(stat(box.locations.userRulesFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    EXPECT_EQ(versions().size(), 1U);
}

TEST_F(RulesDocumentTest, AChangeOfNothingWritesTheFileAllTheSame)
{
    box.writeUserRules("; a comment\n" + line("/a/"));
    test::DocumentAtWork window(box);
    window.document->perform({}, {"Delete 0 Rules"});
    EXPECT_EQ(file(), line("/a/"));
    EXPECT_EQ(window.run.g_dirty, 1);
    EXPECT_FALSE(window.document->undoName());
}

TEST_F(RulesDocumentTest, UndoAndRedoRestoreTagTimeAndOrder)
{
    const std::string before = line("/a/", "one") + line("/b/", "two") + line("/c/");
    box.writeUserRules(before);
    test::DocumentAtWork window(box);
    window.remove("/a/");
    EXPECT_EQ(window.document->undoName(), "Delete Rule");
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(file(), before);
    EXPECT_FALSE(window.document->undoName());
    EXPECT_EQ(window.document->redoName(), "Delete Rule");
    EXPECT_TRUE(window.document->redo());
    EXPECT_EQ(file(), line("/b/", "two") + line("/c/"));
    EXPECT_FALSE(window.document->redo());
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(file(), before);
    EXPECT_FALSE(window.document->undo());
}

TEST_F(RulesDocumentTest, UndoAndRedoReachBackBeyondARestart)
{
    const std::string before = line("/a/", "one") + line("/b/", "two");
    box.writeUserRules(before);
    {
        test::DocumentAtWork earlier(box);
        earlier.remove("/a/");
        earlier.tag("/b/", "three");
    }
    {
        test::DocumentAtWork undoing(box);
        EXPECT_EQ(undoing.document->undoName(), "Edit Tag");
        EXPECT_TRUE(undoing.document->undo());
        EXPECT_EQ(file(), line("/b/", "two"));
        EXPECT_TRUE(undoing.document->undo());
        EXPECT_EQ(file(), before);
    }
    test::DocumentAtWork redoing(box);
    EXPECT_EQ(redoing.document->redoName(), "Delete Rule");
    EXPECT_TRUE(redoing.document->redo());
    EXPECT_EQ(file(), line("/b/", "two"));
    EXPECT_TRUE(redoing.document->redo());
    EXPECT_EQ(file(), line("/b/", "three"));
    EXPECT_FALSE(redoing.document->redo());
}

TEST_F(RulesDocumentTest, AnActionThatRefusesCutsWritesNothingWhereAnotherProgramsRuleWouldBeCut)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    const std::string foreign = line("/a/") + line("/caf\u00e9s/");
    box.writeUserRules(foreign);
    const rules::ChangeSet change = taggingOf({window.ruleWith("/a/")}, "t");
    EXPECT_TRUE(window.document->perform(change, {.action = "Edit Tag", .refusesCuts = true}).failure);
    EXPECT_EQ(file(), foreign);
}

TEST_F(RulesDocumentTest, AnUndoOrRedoThatChangesNothingCounts)
{
    box.writeUserRules("");
    test::DocumentAtWork window(box);
    window.add("/a/");
    window.add("/b/");
    box.writeUserRules(line("/a/"));
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(file(), line("/a/"));
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(file(), "");
    box.writeUserRules(line("/a/"));
    EXPECT_TRUE(window.document->redo());
    EXPECT_EQ(file(), line("/a/"));
    EXPECT_TRUE(window.document->redo());
    EXPECT_EQ(file(), line("/a/") + line("/b/"));
}

TEST_F(RulesDocumentTest, UndoAndRedoKeepWhatAnotherProgramDidSince)
{
    box.writeUserRules(line("/a/") + line("/b/"));
    test::DocumentAtWork window(box);
    window.remove("/a/");
    box.writeUserRules(line("/b/") + line("/foreign/"));
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(file(), line("/a/") + line("/b/") + line("/foreign/"));
    box.writeUserRules(line("/a/") + line("/foreign/") + line("/later/"));
    EXPECT_TRUE(window.document->redo());
    EXPECT_EQ(file(), line("/foreign/") + line("/later/"));
}

TEST_F(RulesDocumentTest, TwoProgramsLoseNothingOfEachOther)
{
    box.writeUserRules(line("/a/") + line("/b/"));
    test::DocumentAtWork one(box);
    test::DocumentAtWork other(box);
    one.add("/one/");
    other.remove("/a/");
    one.add("/two/");
    EXPECT_EQ(file(), line("/b/") + line("/one/") + line("/two/"));
    EXPECT_EQ(other.newsOf(Kind::merged).size(), 1U);
    EXPECT_EQ(test::rowPaths(*one.store), (std::vector<std::string>{"/b/", "/one/", "/two/"}));
}

TEST_F(RulesDocumentTest, WhatAnotherProgramWroteIsMergedAndKept)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    window.document->keepPresentVersion();
    const rules::RuleRef before = window.ruleWith("/a/");
    box.writeUserRules(line("/a/", "theirs") + line("/foreign/"));
    window.add("/b/");
    EXPECT_EQ(file(), line("/a/", "theirs") + line("/foreign/") + line("/b/"));
    EXPECT_EQ(window.ruleWith("/a/"), before); // the window keeps the same record
    ASSERT_EQ(window.newsOf(Kind::merged).size(), 1U);
    EXPECT_NE(window.newsOf(Kind::merged)[0].find("1 rule of another program was kept"), std::string::npos);
    EXPECT_EQ(versions().size(), 3U); // the original file, the other program's, ours
}

// Otherwise its older bytes would follow the writer's version in the journal.
TEST_F(RulesDocumentTest, TheFileIsNotKeptAsAVersionWhileAnotherProgramWritesIt)
{
    box.writeUserRules(line("/a/"));
    DocumentOwner impatient;
    impatient.lockTimeout = std::chrono::milliseconds(0);
    test::DocumentAtWork window(box, impatient);
    window.add("/b/");
    platform::FileLock writer = platform::FileLock::take(
        box.locations.userRulesFile(), platform::LockMode::exclusive, std::chrono::milliseconds(0));
    ASSERT_TRUE(writer.isHeld());
    box.writeUserRules(line("/a/"));
    window.document->keepPresentVersion();
    EXPECT_EQ(versions().size(), 2U);
    writer = platform::FileLock();
    window.document->keepPresentVersion();
    EXPECT_EQ(versions().size(), 3U);
}

TEST_F(RulesDocumentTest, AWriteThatFailsIsToldAndTriedAgain)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    const std::string path = box.locations.userRulesFile();
    std::filesystem::rename(path, path + ".away");
    std::filesystem::create_directory(path);
    const ChangeResult result = window.add("/b/");
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(window.document->failure(), result.failure);
    EXPECT_EQ(window.store->lastErrorMessage(), result.failure);
    EXPECT_TRUE(window.document->hasUnwrittenChanges());
    std::filesystem::remove(path);
    std::filesystem::rename(path + ".away", path);
    window.document->writeNow();
    EXPECT_FALSE(window.document->failure());
    EXPECT_EQ(file(), line("/a/") + line("/b/"));
}

TEST_F(RulesDocumentTest, AFileThatCannotBeReadWholeIsKeptBeforeItIsWritten)
{
    const std::string damaged = line("/a/") + std::string("\0hidden", 7);
    box.writeUserRules(damaged);
    test::DocumentAtWork window(box);
    EXPECT_FALSE(window.add("/b/").failure);
    EXPECT_EQ(test::TemporaryFolder::contents(box.locations.userRulesFile() + ".unread"), damaged);
    EXPECT_EQ(file(), line("/a/") + line("/b/"));
    EXPECT_EQ(window.newsOf(Kind::setAside).size(), 1U);
    EXPECT_FALSE(window.add("/c/").failure);
    EXPECT_EQ(window.newsOf(Kind::setAside).size(), 1U);
}

TEST_F(RulesDocumentTest, AFileThatIsGoneTakesNoRuleAlong)
{
    box.writeUserRules(line("/a/") + line("/b/"));
    test::DocumentAtWork window(box);
    std::filesystem::remove(box.locations.userRulesFile());
    window.add("/c/");
    EXPECT_EQ(file(), line("/a/") + line("/b/") + line("/c/"));
}

TEST_F(RulesDocumentTest, AForeignChangeIsTakenOverAndKeptAsAVersion)
{
    box.writeUserRules(line("/a/") + line("/b/"));
    test::DocumentAtWork window(box);
    window.add("/c/");
    const rules::RuleRef kept = window.ruleWith("/b/");
    box.writeUserRules(line("/b/"));
    window.document->takeForeignChanges();
    EXPECT_EQ(window.reloads, 1);
    EXPECT_EQ(window.ruleWith("/b/"), kept);
    ASSERT_EQ(window.newsOf(Kind::rulesLost).size(), 1U);
    EXPECT_EQ(window.newsOf(Kind::rulesLost)[0], "Another program has removed 2 rules.");
    ASSERT_TRUE(window.news.back().version);
    EXPECT_TRUE(window.document->restore(*window.news.back().version));
    EXPECT_EQ(file(), line("/a/") + line("/b/") + line("/c/"));
    EXPECT_EQ(test::rowPaths(*window.store), (std::vector<std::string>{"/a/", "/b/", "/c/"}));
}

TEST_F(RulesDocumentTest, ALossIsShownAndTakenBackAlsoWhereAnotherOfOurProgramsCausedIt)
{
    box.writeUserRules(line("/a/") + line("/b/"));
    test::DocumentAtWork window(box);
    window.add("/c/"); // version 2
    test::DocumentAtWork other(box);
    other.remove("/a/"); // version 3
    other.remove("/b/"); // version 4
    window.document->takeForeignChanges();
    ASSERT_EQ(window.newsOf(Kind::rulesLost).size(), 1U);
    EXPECT_EQ(window.news.back().version, 2);
    EXPECT_EQ(window.news.back().shownFrom, 3);
}

TEST_F(RulesDocumentTest, AMergeIsShownFromTheVersionAfterTheKnownOne)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    window.document->keepPresentVersion();
    box.writeUserRules(line("/a/") + line("/foreign/"));
    window.add("/b/");
    ASSERT_EQ(window.newsOf(Kind::merged).size(), 1U);
    EXPECT_EQ(window.news.back().shownFrom, 2);
    EXPECT_EQ(versions()[1].number, 2);
    EXPECT_EQ(versions()[1].kind, history::VersionKind::foreign);
}

TEST_F(RulesDocumentTest, AFileThatIsAheadIsToldOnceUntilItIsTakenOver)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    window.document->lookAtFile();
    EXPECT_TRUE(window.newsOf(Kind::fileIsAhead).empty());
    box.writeUserRules(line("/a/") + line("/foreign/"));
    window.document->lookAtFile();
    window.document->lookAtFile();
    EXPECT_EQ(window.newsOf(Kind::fileIsAhead).size(), 1U);
    window.add("/b/");
    window.document->lookAtFile();
    EXPECT_EQ(window.newsOf(Kind::fileIsAhead).size(), 1U);
    box.writeUserRules(line("/other/"));
    window.document->lookAtFile();
    EXPECT_EQ(window.newsOf(Kind::fileIsAhead).size(), 2U);
}

TEST_F(RulesDocumentTest, AFileThatIsGoneIsNotAhead)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork window(box);
    std::filesystem::remove(box.locations.userRulesFile());
    window.document->lookAtFile();
    EXPECT_TRUE(window.news.empty());
}

TEST_F(RulesDocumentTest, WholeLinesAreOfferedOnlyWhereTheyHelp)
{
    test::DocumentAtWork window(box);
    window.add("/quote\"/");
    EXPECT_EQ(window.newsOf(Kind::unwritable).size(), 1U);
    EXPECT_TRUE(window.newsOf(Kind::cutShort).empty());
    window.add("/K\u00e4se/");
    ASSERT_EQ(window.newsOf(Kind::cutShort).size(), 1U);
    EXPECT_EQ(window.news.back().rules.size(), 2U);
}

TEST_F(RulesDocumentTest, RestoreBringsBackTheVeryBytes)
{
    const std::string first = "; a comment\r\n" + line("/a/");
    box.writeUserRules(first);
    test::DocumentAtWork window(box);
    window.add("/b/");
    EXPECT_TRUE(window.document->restore(1));
    EXPECT_EQ(file(), first);
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(file(), line("/a/") + line("/b/"));
    EXPECT_FALSE(window.document->restore(99));
}

TEST_F(RulesDocumentTest, ARestoredVersionCountsItsRulesAndWhatDiffersFromTheOneBefore)
{
    box.writeUserRules(line("/a/") + line("/b/"));
    test::DocumentAtWork window(box);
    window.add("/c/");
    EXPECT_TRUE(window.document->restore(1));
    const auto restored = versions().front();
    EXPECT_EQ(restored.rules, 2U);
    EXPECT_EQ(restored.removed, 1U);
    EXPECT_EQ(restored.added, 0U);
}

TEST_F(DamagedDocumentTest, AVersionThatIsFoundDamagedWhenItIsWrittenChangesNothingAndIsNotTriedAgain)
{
    restoreDamaged();
    window->document->waitUntilWritten();
    EXPECT_EQ(window->document->failure(), "Version 1 can no longer be read");
    EXPECT_EQ(file(), line("/a/") + line("/b/"));
    window->document->writeNow();
    EXPECT_EQ(window->document->failure(), std::nullopt);
    window->add("/c/");
    EXPECT_EQ(file(), line("/a/") + line("/b/") + line("/c/"));
    EXPECT_FALSE(window->document->restore(1));
}

TEST_F(DamagedDocumentTest, AVersionThatIsFoundDamagedDropsNoChangeThatStillHasToBeWritten)
{
    const std::string path = box.locations.userRulesFile();
    std::filesystem::rename(path, path + ".away");
    std::filesystem::create_directory(path);
    ASSERT_TRUE(window->add("/c/").failure);
    std::filesystem::remove(path);
    std::filesystem::rename(path + ".away", path);
    restoreDamaged();
    EXPECT_EQ(window->document->failure(), "Version 1 can no longer be read");
    EXPECT_TRUE(window->document->hasUnwrittenChanges());
    window->document->writeNow();
    EXPECT_EQ(window->document->failure(), std::nullopt);
    EXPECT_EQ(file(), line("/a/") + line("/b/") + line("/c/"));
}

TEST_F(DamagedDocumentTest, AVersionThatIsFoundDamagedLeavesALaterChangeItsName)
{
    platform::FileLock writer = platform::FileLock::take(
        box.locations.userRulesFile(), platform::LockMode::exclusive, std::chrono::milliseconds(0));
    restoreDamaged();
    window->remove("/b/");
    writer = platform::FileLock();
    window->document->waitUntilWritten();
    EXPECT_EQ(file(), line("/a/"));
    EXPECT_EQ(versions()[0].action, "Delete Rule");
}

TEST_F(RulesDocumentTest, AProgramThatWaitsForEachWriteLearnsAtOnceThatAVersionIsDamaged)
{
    box.writeUserRules(line("/a/"));
    test::DocumentAtWork program(box);
    program.add("/b/");
    damageAllVersions();
    EXPECT_FALSE(program.document->restore(1));
    EXPECT_EQ(program.document->failure(), std::nullopt);
}

TEST_F(RulesDocumentTest, RulesWhoseLinesAreCutStayWholeInJournalAndStore)
{
    test::DocumentAtWork window(box);
    window.add("/\u00e9/");
    ASSERT_EQ(window.newsOf(Kind::cutShort).size(), 1U);
    window.add("/b/");
    EXPECT_EQ(window.newsOf(Kind::cutShort).size(), 1U);
    // Another program reads a joined line, and adds a rule.
    box.writeUserRules(file() + line("/foreign/"));
    window.add("/c/");
    EXPECT_EQ(
        test::rowPaths(*window.store), (std::vector<std::string>{"/\u00e9/", "/foreign/", "/b/", "/c/"}));
    window.remove("/\u00e9/");
    EXPECT_TRUE(window.document->undo());
    EXPECT_EQ(test::rowPaths(*window.store).front(), "/\u00e9/");
    ProgramSettings whole = window.document->settings();
    whole.wholeLines = true;
    window.document->setSettings(whole);
    window.document->perform({}, {"Write Whole Lines"});
    EXPECT_EQ(file(), line("/\u00e9/") + line("/foreign/") + line("/b/") + line("/c/"));
}

} // namespace quorvane::workflow
