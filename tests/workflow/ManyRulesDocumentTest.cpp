#include "tests/workflow/ManyRulesDocument.h"

// Documents of so many rules that a thread reads, merges and writes them.

namespace quorvane::workflow {

namespace {

using ManyRulesDocumentTest = test::ManyRulesDocument;

} // namespace

TEST_F(ManyRulesDocumentTest, ReadsAForeignChangeOnTheThread)
{
    const rules::RuleRef kept = window->ruleWith("/7");
    box.writeUserRules(test::lines(30, test::manyRules) + test::fileLine("/foreign"));
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
    box.writeUserRules(test::lines(40, test::manyRules) + test::lines(0, 40));
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
        std::vector{"Another program has removed " + std::to_string(test::manyRules) + " rules."});
}

TEST_F(ManyRulesDocumentTest, MergesAChangeMadeWhileTheFileIsRead)
{
    box.writeUserRules(test::lines(0, test::manyRules) + test::fileLine("/foreign"));
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
    box.writeUserRules(test::lines(0, test::manyRules) + test::fileLine("/first"));
    document().takeForeignChanges();
    window->onReload = [this] {
        box.writeUserRules(test::lines(0, test::manyRules) + test::fileLine("/second"));
        background.run([] {}, [this] { document().takeForeignChanges(); }); // before its version is kept
    };
    document().waitUntilWritten();
    EXPECT_EQ(window->reloads, 2);
    EXPECT_FALSE(has("/first"));
    EXPECT_TRUE(has("/second"));
}

TEST_F(ManyRulesDocumentTest, MergesAForeignChangeOnTheThreadBeforeAWrite)
{
    box.writeUserRules(test::lines(0, test::manyRules) + test::fileLine("/foreign"));
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
    box.writeUserRules(test::lines(0, test::manyRules) + test::fileLine("/foreign"));
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
    box.writeUserRules(test::lines(0, test::manyRules) + test::fileLine("/foreign"));
    document().takeForeignChanges();
    document().begin();
    const auto rule = test::policyRule({.path = "/not committed", .processName = "/bin/sh"});
    window->store->addPolicyRule(rule);
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_TRUE(has("/not committed"));
}

TEST_F(ManyRulesDocumentTest, WritesAndReadsAnImportOnTheThread)
{
    window->store->applyFilterWithString("matches none"); // so that an equal rule is added again
    EXPECT_EQ(import({"/7", "/imported"}), std::nullopt);
    EXPECT_TRUE(has("/imported"));
    EXPECT_EQ(linesInFile("/imported"), 0U);
    EXPECT_EQ(window->store->storedRules(), test::manyRules + 2U);
    document().waitUntilWritten();
    EXPECT_EQ(linesInFile("/imported"), 1U);
    EXPECT_EQ(linesInFile("/7"), 2U);
    EXPECT_EQ(window->store->storedRules(), test::manyRules + 1U);
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
    EXPECT_EQ(window->store->storedRules(), test::manyRules + 1U);
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
    EXPECT_EQ(window->store->storedRules(), test::manyRules + 2U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, WritesAChangeThatWasMadeDuringAFailedWriteAtOnce)
{
    const test::SystemCallHook full(test::SystemCall::write, failingForTheRules(50));
    window->add("/first");
    window->add("/second");
    document().waitUntilWritten();
    EXPECT_EQ(document().failure(), std::nullopt);
    EXPECT_EQ(window->store->storedRules(), test::manyRules + 2U);
    expectFileHasTheRulesOfTheStore();
}

TEST_F(ManyRulesDocumentTest, ReadsAForeignChangeOnTheThreadBesideARuleThatTheFileCannotHold)
{
    window->add("/K\u00e4se");
    document().waitUntilWritten();
    ASSERT_EQ(window->newsOf(Kind::cutShort).size(), 1U);
    box.writeUserRules(test::fileLine("/foreign") + file());
    document().takeForeignChanges();
    EXPECT_EQ(document().work(), DocumentWork::reading);
    EXPECT_FALSE(has("/foreign")) << "the window's thread does not merge";
    document().waitUntilWritten();
    EXPECT_TRUE(has("/foreign"));
    EXPECT_TRUE(has("/K\u00e4se")) << "a reload would have its remains instead";
    EXPECT_EQ(window->newsOf(Kind::merged).size(), 1U);
    window->add("/later");
    document().waitUntilWritten();
    EXPECT_EQ(linesInFile("/foreign"), 1U);
    EXPECT_EQ(linesInFile("/later"), 1U);
}

TEST_F(ManyRulesDocumentTest, KeepsAnEditThatIsMadeWhileAForeignChangeIsReadBesideSuchARule)
{
    window->add("/K\u00e4se");
    document().waitUntilWritten();
    box.writeUserRules(test::fileLine("/foreign") + file());
    document().takeForeignChanges();
    ASSERT_EQ(document().work(), DocumentWork::reading);
    window->add("/meanwhile");
    window->add("/foreign");
    document().waitUntilWritten();
    for (const char* path : {"/foreign", "/K\u00e4se", "/meanwhile"})
        EXPECT_TRUE(has(path)) << path;
    EXPECT_EQ(linesInFile("/foreign"), 1U);
    EXPECT_EQ(linesInFile("/meanwhile"), 1U);
}

} // namespace quorvane::workflow
