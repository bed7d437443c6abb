#include "history/Database.h"
#include "history/JournalPlace.h"
#include "tests/support/LaterWork.h"
#include "tests/support/SystemCalls.h"
#include "tests/workflow/DocumentSandbox.h"
#include "workflow/RuleImport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Documents of so many rules that a thread reads, merges and writes them.

namespace quorvane::workflow {

namespace {

constexpr int manyRules = 20'100;

std::string lines(int from, int to)
{
    std::string text;
    for (int number = from; number < to; ++number)
        text += test::fileLine("/" + std::to_string(number));
    return text;
}

// Calls back while the document reports a reload.
struct ObservedDocument : test::DocumentAtWork {
    using DocumentAtWork::DocumentAtWork;
    void rulesWereReloaded() override
    {
        DocumentAtWork::rulesWereReloaded();
        if (const auto call = std::exchange(onReload, {}))
            call();
    }
    std::function<void()> onReload;
};

class ManyRulesDocumentTest : public testing::Test {
protected:
    ManyRulesDocumentTest()
    {
        box.writeUserRules(lines(0, manyRules));
        window.emplace(box, DocumentOwner{.background = &background});
    }

    RulesDocument& document() { return *window->document; }
    std::string file() const { return test::TemporaryFolder::contents(box.locations.userRulesFile()); }
    bool has(const std::string& path) const
    {
        const auto rules = window->store->userRules();
        return std::any_of(rules.begin(), rules.end(), [&](const rules::RuleRef& rule) {
            return visitRule(rule, [&](const auto& record) { return record.fields().path.view() == path; });
        });
    }
    // How often a line is in the file that a new reader sees.
    std::size_t linesInFile(const std::string& path) const
    {
        const std::string text = file();
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("\"" + path + "\"", at)) != std::string::npos; ++at)
            ++count;
        return count;
    }
    void addAndRestart(const std::string& path)
    {
        window->add(path);
        document().waitUntilWritten();
        window.emplace(box, DocumentOwner{.background = &background});
    }
    void putAFolderInPlaceOfTheFile() const
    {
        std::filesystem::remove(box.locations.userRulesFile());
        std::filesystem::create_directory(box.locations.userRulesFile());
    }
    // Returns why it is not written, as far as that is known at once.
    std::optional<std::string> import(const std::vector<std::string>& paths)
    {
        RuleImport import(document());
        import.begin("/tmp/team.quorv");
        for (const std::string& path : paths)
            import.importRule(test::policyRule({.path = path, .processName = "/bin/sh", .operations = 1}));
        return import.didFinishImportingRules().writeFailure;
    }
    // A disk that becomes full once the version is in the journal, for so many calls.
    static test::SystemCallHook::Answer failingForTheRules(int calls)
    {
        return test::failing(ENOSPC, [calls](int number) { return number > 0 && number <= calls; });
    }
    void expectFileHasTheRulesOfTheStore() const
    {
        EXPECT_EQ(test::rowsAsText(*box.load(), true), test::rowsAsText(*window->store, true));
    }

    test::StoreSandbox box;
    test::LaterWork background;
    std::optional<ObservedDocument> window;
};

using Kind = DocumentNews::Kind;

} // namespace

TEST_F(ManyRulesDocumentTest, ReadsAForeignChangeOnTheThread)
{
    const rules::RuleRef kept = window->ruleWith("/7");
    box.writeUserRules(lines(30, manyRules) + test::fileLine("/foreign"));
    document().takeForeignChanges();
    EXPECT_FALSE(has("/foreign"));
    EXPECT_TRUE(document().isWorking());
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_FALSE(has("/7"));
    EXPECT_EQ(window->reloads, 1);
    EXPECT_EQ(
        window->newsOf(Kind::rulesLost), std::vector<std::string>{"Another program has removed 30 rules."});
    EXPECT_FALSE(document().hasUnwrittenChanges());
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, DoesNotCountRulesThatHaveMovedAsLost)
{
    box.writeUserRules(lines(40, manyRules) + lines(0, 40));
    document().takeForeignChanges();
    document().waitUntilWritten();
    EXPECT_EQ(window->reloads, 1);
    EXPECT_TRUE(window->newsOf(Kind::rulesLost).empty());
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, ReadsAFileOfOtherRulesAsWell)
{
    box.writeUserRules(test::fileLine("/only"));
    document().takeForeignChanges();
    document().waitUntilWritten();
    EXPECT_EQ(window->reloads, 1);
    EXPECT_EQ(test::rowPaths(*window->store), std::vector<std::string>{"/only"});
    EXPECT_EQ(window->newsOf(Kind::rulesLost),
        std::vector<std::string>{"Another program has removed 20100 rules."});
}

TEST_F(ManyRulesDocumentTest, MergesAChangeMadeWhileTheFileIsRead)
{
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/foreign"));
    document().takeForeignChanges();
    window->add("/mine");
    window->remove("/7");
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_TRUE(has("/mine"));
    EXPECT_FALSE(has("/7"));
    EXPECT_EQ(linesInFile("/foreign"), 1U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, LooksAgainAtAFileThatIsWrittenWhileItIsBusy)
{
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/first"));
    document().takeForeignChanges();
    window->onReload = [this] {
        box.writeUserRules(lines(0, manyRules) + test::fileLine("/second"));
        background.run([] {}, [this] { document().takeForeignChanges(); }); // before its version is kept
    };
    document().waitUntilWritten();
    EXPECT_EQ(window->reloads, 2);
    EXPECT_FALSE(has("/first"));
    EXPECT_TRUE(has("/second"));
}

TEST_F(ManyRulesDocumentTest, MergesAForeignChangeOnTheThreadBeforeAWrite)
{
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/foreign"));
    window->add("/mine");
    EXPECT_FALSE(has("/foreign"));
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_EQ(window->newsOf(Kind::merged).size(), 1U);
    EXPECT_EQ(linesInFile("/foreign"), 1U);
    EXPECT_EQ(linesInFile("/mine"), 1U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, MergesAgainWhenRulesChangeInTheMeantime)
{
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/foreign"));
    window->add("/mine");
    window->remove("/7");
    window->add("/mine too");
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_TRUE(has("/mine too"));
    EXPECT_FALSE(has("/7"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, LeavesRulesThatAreNotCommittedWhenTheFileIsRead)
{
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/foreign"));
    document().takeForeignChanges();
    document().begin();
    const auto rule = test::policyRule({.path = "/not committed", .processName = "/bin/sh"});
    window->store->addPolicyRule(rule);
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_TRUE(has("/not committed"));
}

TEST_F(ManyRulesDocumentTest, RestoresOnTheThread)
{
    window->add("/mine");
    document().waitUntilWritten();
    const rules::RuleRef kept = window->ruleWith("/7");
    EXPECT_TRUE(document().restore(1));
    document().waitUntilWritten();
    EXPECT_EQ(file(), lines(0, manyRules));
    EXPECT_FALSE(has("/mine"));
    EXPECT_EQ(window->ruleWith("/7"), kept);
    EXPECT_EQ(window->reloads, 1);
    EXPECT_TRUE(window->newsOf(Kind::merged).empty());
}

TEST_F(ManyRulesDocumentTest, MergesAChangeMadeWhileAVersionIsRestored)
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

TEST_F(ManyRulesDocumentTest, WritesAndReadsAnImportOnTheThread)
{
    window->store->applyFilterWithString("matches none"); // so that an equal rule is added again
    EXPECT_EQ(import({"/7", "/imported"}), std::nullopt);
    EXPECT_TRUE(has("/imported"));
    EXPECT_EQ(linesInFile("/imported"), 0U);
    EXPECT_EQ(window->store->storedRules(), manyRules + 2U);
    document().waitUntilWritten();
    EXPECT_EQ(linesInFile("/imported"), 1U);
    EXPECT_EQ(linesInFile("/7"), 2U);
    EXPECT_EQ(window->store->storedRules(), manyRules + 1U);
    EXPECT_EQ(window->reloads, 1);
}

TEST_F(ManyRulesDocumentTest, KeepsSuggestionsWhenAnImportCannotBeWritten)
{
    box.folder.write("Users/Shared/Quorvane/failsafe.rc", "allow path /s any r\n");
    putAFolderInPlaceOfTheFile();
    EXPECT_NE(import({"/imported"}), std::nullopt);
    EXPECT_TRUE(std::filesystem::exists(box.locations.failSafeFile()));
}

TEST_F(ManyRulesDocumentTest, DoesNotReadTheFileAgainWhenAnImportCannotBeWritten)
{
    background.run([this] { std::filesystem::remove_all(box.locations.sharedFolder()); }, [] {});
    EXPECT_EQ(import({"/imported"}), std::nullopt);
    document().waitUntilWritten();
    background.wait();
    EXPECT_TRUE(document().failure());
    EXPECT_TRUE(has("/imported"));
    EXPECT_EQ(window->store->storedRules(), manyRules + 1U);
    EXPECT_EQ(window->reloads, 0);
}

TEST_F(ManyRulesDocumentTest, KeepsAChangeMadeWhileTheFileIsReadAfterAnImport)
{
    document().reload();
    window->add("/mine");
    document().waitUntilWritten();
    EXPECT_TRUE(has("/mine"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, UndoesAndRedoesWhatIsStillBeingWrittenWithoutWaiting)
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

TEST_F(ManyRulesDocumentTest, KeepsForeignRulesWhenWhatIsBeingWrittenIsUndone)
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

TEST_F(ManyRulesDocumentTest, UndoesAndRedoesAnActionOfAnEarlierRunOnTheThread)
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

TEST_F(ManyRulesDocumentTest, KeepsAChangeMadeWhileAnActionIsUndone)
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

TEST_F(ManyRulesDocumentTest, SaysThatAnActionCannotBeUndoneWhenOnlyTheThreadFindsItDamaged)
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

TEST_F(ManyRulesDocumentTest, DoesNotRepeatAWriteThatHasFailedBeforeTheNextChange)
{
    {
        const test::SystemCallHook full(test::SystemCall::write, failingForTheRules(1000)); // not for ever
        window->add("/first");
        document().waitUntilWritten();
        EXPECT_TRUE(document().failure());
        EXPECT_TRUE(document().hasUnwrittenChanges());
    }
    window->add("/second");
    document().waitUntilWritten();
    EXPECT_EQ(document().failure(), std::nullopt);
    EXPECT_EQ(window->store->storedRules(), manyRules + 2U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, WritesAChangeThatWasMadeDuringAFailedWriteAtOnce)
{
    const test::SystemCallHook full(test::SystemCall::write, failingForTheRules(50));
    window->add("/first");
    window->add("/second");
    document().waitUntilWritten();
    EXPECT_EQ(document().failure(), std::nullopt);
    EXPECT_EQ(window->store->storedRules(), manyRules + 2U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, UndoesOneActionAlsoBehindThoseThatCouldNotBeWritten)
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

TEST_F(ManyRulesDocumentTest, UndoesWithWhatAnotherProgramHasWrittenSince)
{
    window->add("/mine");
    document().waitUntilWritten();
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/mine") + test::fileLine("/foreign"));
    EXPECT_TRUE(document().undo());
    document().waitUntilWritten();
    EXPECT_FALSE(has("/mine"));
    EXPECT_TRUE(has("/foreign"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, UndoesBehindOtherWorkWithoutWaitingForIt)
{
    window->add("/mine");
    window->add("/wrong");
    document().waitUntilWritten();
    document().keepPresentVersion();
    ASSERT_EQ(document().work(), DocumentWork::recording);
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

TEST_F(ManyRulesDocumentTest, UndoesBehindAForeignChangeThatIsBeingRead)
{
    window->add("/mine");
    document().waitUntilWritten();
    box.writeUserRules(lines(0, manyRules) + test::fileLine("/mine") + test::fileLine("/foreign"));
    document().takeForeignChanges();
    EXPECT_TRUE(document().undo());
    EXPECT_EQ(document().work(), DocumentWork::reading);
    EXPECT_TRUE(has("/mine"));
    document().waitUntilWritten();
    EXPECT_FALSE(has("/mine"));
    EXPECT_TRUE(has("/foreign"));
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, MakesALaterChangeBehindTheUndoThatWasAskedForFirst)
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

TEST_F(ManyRulesDocumentTest, SaysWhenThereWasNothingToUndoBehindOtherWork)
{
    document().keepPresentVersion();
    EXPECT_TRUE(document().undo());
    EXPECT_TRUE(document().redo());
    document().waitUntilWritten();
    EXPECT_EQ(window->newsOf(Kind::journal),
        (std::vector<std::string>{"There is nothing to undo.", "There is nothing to redo."}));
    expectFileHasTheRulesOfTheStore();
}

} // namespace quorvane::workflow
