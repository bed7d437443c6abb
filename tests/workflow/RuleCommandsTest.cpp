#include "workflow/RuleCommands.h"
#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TestDocument.h"
#include "workflow/RuleCells.h"
#include "workflow/RunState.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace quorvane::workflow {

namespace {

const std::string deleteMessage
    = "System rules cannot be deleted using this tool. Please disable Quorvane and "
      "edit the system rules directly to make changes.";
const std::string editMessage = "System rules cannot be edited using this tool. Please disable Quorvane and "
                                "edit the system rules directly to make changes.";

// The user's rules: one watch rule, two rules of /bin/sh, one of /bin/vi; and one system rule of /bin/sh.
class RuleCommandsTest : public testing::Test {
protected:
    RuleCommandsTest()
    {
        box.writeUserRules("set some.option 1\n" + watchLine + shLine + sh2Line + viLine);
        box.writeSystemFile("quorvane.rc", "allow prefix \"/system/\" \"/bin/sh\" r\n");
        store = box.load(log.log());
        document = std::make_unique<test::TestDocument>(*store, run, log.log());
        commands = std::make_unique<RuleCommands>(*document, log.log());
    }
    std::string file() const { return test::TemporaryFolder::contents(box.locations.userRulesFile()); }
    std::size_t rowOf(const std::string& path, bool includeSystemRules = true) const
    {
        const auto paths = test::rowPaths(*store, includeSystemRules);
        return static_cast<std::size_t>(std::find(paths.begin(), paths.end(), path) - paths.begin());
    }
    // A rule with its row in a table of the current rows.
    RuleRow rowAt(std::size_t row, bool includeSystemRules) const
    {
        return {row, store->ruleAtIndex(row, includeSystemRules)};
    }
    TableChange deleteRow(std::size_t row, bool includeSystemRules) const
    {
        const RuleRow rule = rowAt(row, includeSystemRules);
        const std::optional<RuleRow> above
            = row == 0 ? std::nullopt : std::optional(rowAt(row - 1, includeSystemRules));
        return commands->deleteRow(rule, above ? &above->rule : nullptr);
    }
    TableChange deleteRows(const std::vector<std::size_t>& rows, bool includeSystemRules) const
    {
        std::vector<RuleRow> rules;
        for (const std::size_t row : rows)
            rules.push_back(rowAt(row, includeSystemRules));
        return commands->deleteRows(rules);
    }

    const std::string watchLine = "watch prefix \"/w/\" \"/bin/sh\" r \"\"\n";
    const std::string shLine = "allow prefix \"/a/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n";
    const std::string sh2Line = "allow prefix \"/b/\" \"/bin/sh\" r \"\" \"\" \"0\"\n";
    const std::string viLine = "deny path \"/c\" \"/bin/vi\" w \"\" \"\" \"0\"\n";
    test::StoreSandbox box;
    test::CapturedLog log;
    RunState run;
    std::unique_ptr<rules::RuleManager> store;
    std::unique_ptr<test::TestDocument> document;
    std::unique_ptr<RuleCommands> commands;
};

} // namespace

TEST_F(RuleCommandsTest, NewRulesReadWriteAndCreateForAnyProgramUnderAPrefix)
{
    const rules::PolicyRulePtr policy = RuleCommands::newPolicy();
    EXPECT_EQ(ruleLine(policy->fields()), "allow prefix \"\" \"any\" rwc \"\" \"\" \"0\"\n");
    EXPECT_EQ(policy->tag().view(), "");
    const rules::WatchRulePtr watch = RuleCommands::newWatch();
    EXPECT_EQ(watch->policyType(), 0);
    EXPECT_EQ(watch->path().written(), "");
    EXPECT_EQ(watch->processName().written(), "any");
    EXPECT_EQ(watch->operations(), 7U);
}

TEST_F(RuleCommandsTest, ANewRuleLikeAnotherTakesItsProgramAndConstraintAndNothingElse)
{
    const rules::RuleRef clicked = test::policyRule({.policyClass = 1,
        .policyType = 1,
        .path = "/x",
        .processName = "/bin/vi",
        .tag = "t",
        .constraint = "TEAM",
        .operations = 1});
    const rules::PolicyRulePtr rule = RuleCommands::newPolicyLike(clicked);
    EXPECT_EQ(ruleLine(rule->fields()), "allow prefix \"\" \"/bin/vi\" rwc \"\" \"TEAM\" \"0\"\n");
    EXPECT_EQ(rule->constraint().written(), "TEAM");
    EXPECT_EQ(rule->tag().view(), "");
}

TEST_F(RuleCommandsTest, ANewRuleLikeAWatchRuleHasAnEmptyConstraint)
{
    const rules::PolicyRulePtr rule = RuleCommands::newPolicyLike(
        test::watchRule({.path = "/x", .processName = "/bin/vi", .operations = 1}));
    EXPECT_EQ(rule->processName().written(), "/bin/vi");
    EXPECT_FALSE(rule->constraint().isNull());
    EXPECT_EQ(rule->constraint().view(), "");
}

TEST_F(RuleCommandsTest, DeletingARowWritesTheFileAndMarksTheRun)
{
    const TableChange change = deleteRow(rowOf("/b/"), true);
    EXPECT_EQ(change.removedRows.size(), 1U);
    EXPECT_FALSE(change.notice);
    EXPECT_EQ(file(), watchLine + shLine + viLine);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(run.internalWrite);
}

TEST_F(RuleCommandsTest, DeletingTheFirstRuleOfAGroupIsTold)
{
    const std::size_t row = rowOf("/a/", false);
    const TableChange change = deleteRow(row, false);
    EXPECT_EQ(change.removedRows, std::vector<std::size_t>{row});
    // Below a watch rule the row is not a group head: see the next test; without the watch rule it is.
    EXPECT_FALSE(change.headedItsGroup);
    deleteRow(rowOf("/w/", false), false);
    EXPECT_TRUE(deleteRow(0, false).headedItsGroup);
}

TEST_F(RuleCommandsTest, DeliberateAPolicyRuleBelowAWatchRuleHeadsNoGroup)
{
    ASSERT_EQ(test::rowPaths(*store, false), (std::vector<std::string>{"/w/", "/a/", "/b/", "/c"}));
    EXPECT_FALSE(deleteRow(1, false).headedItsGroup);
}

TEST_F(RuleCommandsTest, DeliberateARuleBelowAnotherProgramOfItsNameHeadsNoGroup)
{
    box.writeUserRules(shLine + "allow prefix \"/b/\" \"/usr/bin/sh\" r \"\" \"\" \"0\"\n" + viLine);
    store->reloadCurrentUserConfiguration();
    ASSERT_EQ(test::rowPaths(*store, false), (std::vector<std::string>{"/a/", "/b/", "/c"}));
    ASSERT_TRUE(ruleCell(*store, *store->rows(), 1, false, RuleColumn::application).startsGroup);
    EXPECT_FALSE(deleteRow(1, false).headedItsGroup);
}

TEST_F(RuleCommandsTest, DeletingTheHeadOfALaterGroupIsTold)
{
    box.writeUserRules(shLine + viLine + "deny path \"/d\" \"/bin/vi\" w \"\" \"\" \"0\"\n");
    store->reloadCurrentUserConfiguration();
    EXPECT_TRUE(deleteRow(1, false).headedItsGroup);
}

TEST_F(RuleCommandsTest, ARuleInTheMiddleOfAGroupHeadsNone)
{
    EXPECT_FALSE(deleteRow(rowOf("/b/", false), false).headedItsGroup);
}

TEST_F(RuleCommandsTest, AWatchRuleHeadsNoGroup)
{
    const TableChange change = deleteRow(0, false);
    EXPECT_EQ(change.removedRows, std::vector<std::size_t>{0});
    EXPECT_FALSE(change.headedItsGroup);
    EXPECT_EQ(file(), shLine + sh2Line + viLine);
}

TEST_F(RuleCommandsTest, ARuleIsDeletedThatHasLeftTheRowItWasShownIn)
{
    const RuleRow shown = rowAt(rowOf("/c", false), false);
    deleteRow(0, false);
    commands->deleteRows({shown});
    EXPECT_EQ(file(), shLine + sh2Line);
}

TEST_F(RuleCommandsTest, DeliberateOfEqualRulesTheFirstIsDeletedThatIsNotYetGone)
{
    // given three equal rules of either kind, told apart by their tags
    const std::vector<std::string> tags{"one", "two", "three"};
    box.writeUserRules("");
    store->reloadCurrentUserConfiguration();
    for (const std::string& tag : tags)
        store->addWatchRule(test::watchRule({.path = "/w", .processName = "any", .tag = tag}));
    for (const std::string& tag : tags)
        store->addPolicyRule(test::policyRule({.path = "/p", .processName = "any", .tag = tag}));
    const auto tagsLeft = [this] {
        std::string left;
        for (const rules::RuleRef& rule : store->userRules())
            left.append(left.empty() ? "" : " ").append(tagOf(valueOf(rule)).view());
        return left;
    };

    // when the last of each is named, then the first one goes
    deleteRow(2, false);
    EXPECT_EQ(tagsLeft(), "two three one two three");
    deleteRows({4}, false);
    EXPECT_EQ(tagsLeft(), "two three two three");

    // when both that are left are named, then both go
    deleteRows({1, 0}, false);
    EXPECT_EQ(tagsLeft(), "two three");
    deleteRows({1, 0}, false);
    EXPECT_EQ(tagsLeft(), "");
}

TEST_F(RuleCommandsTest, DeletingASystemRuleIsRefusedAndChangesNothing)
{
    const std::string before = file();
    const TableChange change = deleteRow(rowOf("/system/"), true);
    EXPECT_TRUE(change.removedRows.empty());
    ASSERT_TRUE(change.notice);
    EXPECT_EQ(change.notice->header, "Cannot Delete System Rule");
    EXPECT_EQ(change.notice->message, deleteMessage);
    EXPECT_EQ(file(), before);
    EXPECT_EQ(run.g_dirty, 0);
    EXPECT_FALSE(run.internalWrite);
}

TEST_F(RuleCommandsTest, ARuleThatEqualsNothingLeavesTableAndFileUntouchedSilently)
{
    // A null text equals nothing, not even itself, so the store finds no rule to delete.
    store->addPolicyRule(test::policyRule({.path = "/null", .operations = 1}));
    const std::string before = file();
    const TableChange change = deleteRow(rowOf("/null"), true);
    EXPECT_TRUE(change.removedRows.empty());
    EXPECT_FALSE(change.notice);
    EXPECT_EQ(file(), before);
}

TEST_F(RuleCommandsTest, AMixedSelectionDeletesTheUsersRulesAndTellsOfTheSystemRulesOnce)
{
    store->addPolicyRule(
        test::policyRule({.path = "/system2/", .processName = "/bin/sh", .operations = 1, .system = true}));
    std::vector<std::size_t> all;
    for (std::size_t row = 0; row < store->totalRules(true); ++row)
        all.push_back(row);

    const TableChange change = deleteRows(all, true);

    EXPECT_EQ(change.removedRows.size(), 4U);
    ASSERT_TRUE(change.notice);
    EXPECT_EQ(change.notice->header, "Cannot Delete System Rules");
    EXPECT_EQ(change.notice->message, deleteMessage);
    EXPECT_EQ(file(), "");
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/system/", "/system2/"}));
    const auto lines = log.lines();
    const std::string last = std::to_string(change.removedRows.back());
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                  "-[RulesEditorTableController deleteRows:] deleting row " + last),
        1);
}

TEST_F(RuleCommandsTest, AllRowsAreDeletedAndComeBackAsAWhole)
{
    const std::string before = watchLine + shLine + sh2Line + viLine;
    const auto paths = test::rowPaths(*store);

    const TableChange change = commands->deleteAllRows(*store->rows(), false);

    EXPECT_EQ(change.removedRows, (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_FALSE(change.notice);
    EXPECT_TRUE(change.remaining.empty());
    EXPECT_EQ(file(), "");
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_EQ(test::rowPaths(*store), std::vector<std::string>{"/system/"});
    const auto lines = log.lines();
    for (const std::string row : {"0", "3"})
        EXPECT_EQ(std::count(lines.begin(), lines.end(),
                      "-[RulesEditorTableController deleteRows:] deleting row " + row),
            1);
    EXPECT_EQ(document->undoName(), "Delete 4 Rules");
    const auto version = document->openJournal()->versions().front();
    EXPECT_EQ(version.removed, 4U);
    EXPECT_EQ(version.added, 0U);
    EXPECT_TRUE(document->undo());
    EXPECT_EQ(file(), before);
    EXPECT_EQ(test::rowPaths(*store), paths);
    EXPECT_EQ(document->openJournal()->versions().front().added, 4U);
    EXPECT_TRUE(document->redo());
    EXPECT_EQ(file(), "");
}

TEST_F(RuleCommandsTest, AllRowsOfATableWithoutRulesAreNothingToUndo)
{
    commands->deleteAllRows(*store->rows(), false);
    run.g_dirty = 0;
    EXPECT_TRUE(commands->deleteAllRows(*store->rows(), false).removedRows.empty());
    EXPECT_EQ(run.g_dirty, 1) << "the file is written all the same";
    EXPECT_EQ(document->undoName(), "Delete 4 Rules");
}

TEST_F(RuleCommandsTest, AllRowsOfASearchLeaveTheRulesThatItHides)
{
    store->applyFilterWithString("/bin/vi");
    const TableChange change = commands->deleteAllRows(*store->rows(), false);
    EXPECT_EQ(change.removedRows, std::vector<std::size_t>{0});
    EXPECT_EQ(file(), watchLine + shLine + sh2Line);
}

TEST_F(RuleCommandsTest, AllRowsThatAreNoLongerThoseOfTheStoreTakeNoLaterRule)
{
    const auto shown = store->rows();
    store->addPolicyRule(test::policyRule({.path = "/later", .processName = "/bin/sh", .operations = 1}));
    commands->deleteAllRows(*shown, false);
    EXPECT_EQ(test::rowPaths(*store, false), std::vector<std::string>{"/later"});
}

TEST_F(RuleCommandsTest, AllRowsWithThoseOfTheSystemTellOfThem)
{
    const TableChange change = commands->deleteAllRows(*store->rows(), true);
    EXPECT_EQ(change.removedRows.size(), 4U);
    ASSERT_TRUE(change.notice);
    EXPECT_EQ(change.notice->header, "Cannot Delete System Rules");
    EXPECT_EQ(test::rowPaths(*store), std::vector<std::string>{"/system/"});
}

TEST_F(RuleCommandsTest, DeliberateWithOnlySystemRulesSelectedTheFileIsRewrittenAllTheSame)
{
    const TableChange change = deleteRows({rowOf("/system/")}, true);
    EXPECT_TRUE(change.removedRows.empty());
    ASSERT_TRUE(change.notice);
    EXPECT_EQ(change.notice->header, "Cannot Delete System Rules");
    EXPECT_EQ(file(), watchLine + shLine + sh2Line + viLine); // the option is gone: the file was rewritten
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(run.internalWrite);
}

TEST_F(RuleCommandsTest, DeletingSeveralWithoutSystemRulesSaysNothing)
{
    const TableChange change = deleteRows({1, 3}, false);
    EXPECT_EQ(change.removedRows, (std::vector<std::size_t>{1, 3}));
    EXPECT_FALSE(change.notice);
    EXPECT_EQ(file(), watchLine + sh2Line);
}

TEST_F(RuleCommandsTest, ATagIsWrittenAndLogged)
{
    const std::size_t row = rowOf("/b/");
    EXPECT_FALSE(commands->setTag(rowAt(row, true), "caf\xC3\xA9 \"x\""));
    EXPECT_EQ(test::policyAt(*store, row)->tag().view(), "caf\xC3\xA9 \"x\"");
    EXPECT_EQ(log.lines().back(),
        "set tag to 'caf\xC3\xA9 \"x\"' for row " + std::to_string(row) + " rule /bin/sh / /b/");
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(run.internalWrite);
}

TEST_F(RuleCommandsTest, ATagOfAWatchRuleIsWrittenWithoutALogLine)
{
    const std::size_t lines = log.lines().size();
    EXPECT_FALSE(commands->setTag(rowAt(0, false), "seen"));
    EXPECT_EQ(file(), "watch prefix \"/w/\" \"/bin/sh\" r \"seen\"\n" + shLine + sh2Line + viLine);
    EXPECT_EQ(log.lines().size(), lines);
}

TEST_F(RuleCommandsTest, DeliberateASystemRuleKeepsItsTagButTheFileIsWritten)
{
    const std::size_t row = rowOf("/system/");
    const std::string tag(test::policyAt(*store, row)->tag().view());
    const auto notice = commands->setTag(rowAt(row, true), "mine");
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->header, "Cannot Edit System Rules");
    EXPECT_EQ(notice->message, editMessage);
    EXPECT_EQ(test::policyAt(*store, row)->tag().view(), tag);
    EXPECT_EQ(log.lines().back(),
        "set tag to '" + tag + "' for row " + std::to_string(row) + " rule /bin/sh / /system/");
    EXPECT_EQ(file(), watchLine + shLine + sh2Line + viLine);
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(RuleCommandsTest, DeliberateATagWithoutARowChangesNoRuleButWritesTheFile)
{
    EXPECT_FALSE(commands->setTag(std::nullopt, "nobody's"));
    EXPECT_EQ(file(), watchLine + shLine + sh2Line + viLine);
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(RuleCommandsTest, AFileThatCannotBeWrittenLeavesTheRulesInMemoryAndAMessage)
{
    std::filesystem::remove(box.locations.userRulesFile());
    std::filesystem::create_directory(box.locations.userRulesFile());
    const TableChange change = deleteRow(1, false);
    EXPECT_EQ(change.removedRows, std::vector<std::size_t>{1});
    ASSERT_TRUE(store->lastErrorMessage());
    EXPECT_EQ(*store->lastErrorMessage(),
        "Failed to open file '" + box.locations.userRulesFile() + "' for writing: Is a directory (21)");
    EXPECT_EQ(test::rowPaths(*store, false), (std::vector<std::string>{"/w/", "/b/", "/c"}));
}

} // namespace quorvane::workflow
