#include "workflow/RuleEditing.h"
#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "workflow/RunState.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

// A store whose user's file can be written.
class RuleEditing : public testing::Test {
protected:
    RuleEditing() { std::filesystem::create_directories(locations.sharedFolder()); }

    std::string file() const { return test::TemporaryFolder::contents(locations.userRulesFile()); }

    const test::TemporaryFolder folder;
    const platform::Locations locations{folder.path(), "ann"};
    rules::RuleManager store{locations, test::silentLog()};
    RunState run;
    test::TestDocument document{store, run};
};

const RuleDraft edits{.policyClass = rules::PolicyClass::deny,
    .policyType = rules::PolicyType::path,
    .path = "/new",
    .processName = "/bin/new",
    .constraint = "TEAM",
    .operations = 17};

} // namespace

TEST(IsCompleteRule, AsksForNothingButAPathAndAProgram)
{
    EXPECT_TRUE(isCompleteRule("x", "y"));
    EXPECT_TRUE(isCompleteRule(" ", " "));
    EXPECT_FALSE(isCompleteRule("", "y"));
    EXPECT_FALSE(isCompleteRule("x", ""));
    EXPECT_FALSE(isCompleteRule("", ""));
}

TEST(PolicyTypeForPath, FollowsTheFirstAndLastCharacter)
{
    const struct {
        const char* why;
        const char* path;
        std::int32_t type;
    } cases[] = {
        {"a slash at the end means a folder", "/Users/ann/", rules::PolicyType::prefix},
        {"without it, exactly this path", "/Users/ann", rules::PolicyType::path},
        {"a point at the start means a name extension", ".jpg", rules::PolicyType::suffix},
        {"the point goes before the slash", ".git/", rules::PolicyType::suffix},
        {"nothing typed yet", "", rules::PolicyType::path},
        {"a point elsewhere says nothing", "/a.jpg", rules::PolicyType::path},
    };
    for (const auto& c : cases)
        EXPECT_EQ(policyTypeForPath(c.path), c.type) << c.why;
}

TEST(ConstraintLabel, FollowsTheLengthAlone)
{
    EXPECT_EQ(constraintLabel(std::string(40, 'z')), "SHA1");
    EXPECT_EQ(constraintLabel(std::string(64, 'z')), "SHA256");
    for (const std::size_t length : {0U, 1U, 10U, 39U, 41U, 63U, 65U})
        EXPECT_EQ(constraintLabel(std::string(length, 'a')), "Team ID") << length;
}

TEST(ConstraintLabel, CountsUtf16CodeUnits)
{
    std::string text;
    for (int count = 0; count < 20; ++count)
        text += "\xF0\x9F\x94\x92"; // one character of four bytes and two units
    EXPECT_EQ(constraintLabel(text), "SHA1");
}

TEST(IconForProcess, IsTheLockForAnyAlone)
{
    EXPECT_EQ(iconForProcess("any").kind, ProgramIcon::Kind::lock);
    for (const char* process :
        {"any ", " any", "Any", "any via any", "any via /bin/sh", "any ancestor /bin/sh"})
        EXPECT_EQ(iconForProcess(process).kind, ProgramIcon::Kind::none) << process;
}

TEST(IconForProcess, IsThatOfTheOutermostBundleOfAProgramThatExists)
{
    const test::TemporaryFolder folder;
    const std::string tool = folder.write("tool", "");
    const std::string program = folder.write("A.app/Contents/Helpers/B.app/Contents/MacOS/B", "");
    const struct {
        const char* why;
        std::string process;
        std::string file;
    } cases[] = {
        {"a program outside a bundle", tool, tool},
        {"a program in a bundle", program, folder.path("A.app")},
        {"the bundle itself, as it is picked", folder.path("A.app/"), folder.path("A.app")},
        {"a program and its parent", tool + " via /bin/sh via /bin/ls", tool},
        {"a program through any parent", program + " via any", folder.path("A.app")},
    };
    for (const auto& c : cases) {
        const ProgramIcon icon = iconForProcess(c.process);
        EXPECT_EQ(icon.kind, ProgramIcon::Kind::file) << c.why;
        EXPECT_EQ(icon.file, c.file) << c.why;
    }
}

TEST(IconForProcess, IsAskedForWithTheWholeTextOfProgramAndParents)
{
    // A program that is called like one with a parent keeps its name only while the parent's part is there.
    const test::TemporaryFolder folder;
    const std::string program = folder.write("tool via any", "");
    EXPECT_EQ(iconForProcess(program + " via any").file, program);
}

TEST(IconForProcess, IsLookedUpInThePlaceThatTheRulesAreFor)
{
    const test::TemporaryFolder folder;
    folder.write("volume/bin/tool", "");
    std::error_code error;
    const auto volume = RulesPlace::folder(folder.path("volume"), error);
    EXPECT_EQ(iconForProcess("/bin/tool", *volume).file, "/bin/tool");
    EXPECT_EQ(iconForProcess("/bin/sh", *volume).kind, ProgramIcon::Kind::none);
    EXPECT_EQ(iconForProcess("/bin/sh", RulesPlace::nowhere()).kind, ProgramIcon::Kind::none);
}

TEST(IconForProcess, IsNoneWhenNothingIsAtTheProgramsPath)
{
    const test::TemporaryFolder folder;
    const std::string tool = folder.write("tool", "");
    for (const std::string& process : {std::string(), folder.path("gone"),
             folder.path("gone") + " via /bin/sh", tool + " via anything", tool + " (-x)"})
        EXPECT_EQ(iconForProcess(process).kind, ProgramIcon::Kind::none) << process;
}

TEST(PanelStart, IsTheFallbackWhenNoPathIsNamed)
{
    EXPECT_EQ(panelStart("", "/home/ann"), "/home/ann");
    EXPECT_EQ(panelStart("any", "/home/ann"), "/home/ann");
    EXPECT_EQ(panelStart("any ", "/home/ann"), "any ");
    EXPECT_EQ(panelStart("/bin", "/home/ann"), "/bin");
}

TEST_F(RuleEditing, SavingReplacesTheRuleAndWritesTheFile)
{
    const auto rule = test::policyRule(
        {.path = "/old", .processName = "/bin/old", .tag = "mine", .operations = 1, .created = 7});
    const auto other = test::policyRule({.path = "/other", .processName = "/bin/old", .operations = 1});
    store.addPolicyRule(rule);
    store.addPolicyRule(other);

    saveRule(document, rule, edits);

    EXPECT_EQ(file(),
        "deny path \"/new\" \"/bin/new\" rx \"mine\" \"TEAM\" \"7\"\n"
        "allow prefix \"/other\" \"/bin/old\" r \"\" \"\" \"0\"\n");
    EXPECT_EQ(std::get<rules::PolicyRulePtr>(store.ruleAtIndex(0, true)), rule);
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(RuleEditing, SavingKeepsTagFlagsTimeAndSystemFlag)
{
    const auto rule = test::policyRule(
        {.path = "/p", .processName = "/q", .tag = "t", .flags = 3, .created = 5, .sequence = 9});
    saveRule(document, rule, edits);
    EXPECT_EQ(rule->tag().view(), "t");
    EXPECT_EQ(rule->flags(), 3U);
    EXPECT_EQ(rule->created(), 5U);
    EXPECT_EQ(rule->sequence(), 9);
    EXPECT_FALSE(rule->system());
    const auto watch = test::watchRule({.path = "/p", .processName = "/q", .tag = "t", .flags = 2});
    saveRule(document, watch, edits);
    EXPECT_EQ(watch->tag().view(), "t");
    EXPECT_EQ(watch->flags(), 2U);
}

TEST_F(RuleEditing, SavingANewRuleAddsIt)
{
    saveRule(document, test::policyRule({}), edits);
    saveRule(document, test::watchRule({}),
        {.policyType = rules::PolicyType::suffix, .path = ".jpg", .processName = "any", .operations = 2});
    EXPECT_EQ(file(),
        "watch suffix \".jpg\" \"any\" w \"\"\n"
        "deny path \"/new\" \"/bin/new\" rx \"\" \"TEAM\" \"0\"\n");
}

TEST_F(RuleEditing, TextsAreSavedAsTheyStand)
{
    const auto rule = test::policyRule({.tag = "", .constraint = std::nullopt});
    saveRule(document, rule, {.path = "  /a  ", .processName = " "});
    EXPECT_EQ(rule->path().view(), "  /a  ");
    EXPECT_EQ(rule->processName().view(), " ");
    EXPECT_FALSE(rule->constraint().isNull());
    EXPECT_EQ(file(), "allow prefix \"  /a  \" \" \"  \"\" \"\" \"0\"\n");
}

TEST_F(RuleEditing, WithoutAChosenClassAndTypeTheUnknownOnesStay)
{
    const auto rule = test::policyRule({.policyClass = rules::unknownCode, .policyType = rules::unknownCode});
    saveRule(document, rule, {.path = "/a", .processName = "/b"});
    EXPECT_EQ(rule->policyClass(), rules::unknownCode);
    EXPECT_EQ(rule->policyType(), rules::unknownCode);
}

TEST_F(RuleEditing, TwoEditsOfOneRuleLeaveOneRuleAndTheLastWins)
{
    const auto rule = test::policyRule({.path = "/old", .processName = "/bin/old", .operations = 1});
    store.addPolicyRule(rule);
    RuleDraft second = edits;
    second.path = "/newest";
    saveRule(document, rule, edits);
    saveRule(document, rule, second);
    EXPECT_EQ(file(), "deny path \"/newest\" \"/bin/new\" rx \"\" \"TEAM\" \"0\"\n");
}

TEST_F(RuleEditing, OfTwoEqualRulesTheEditedOneIsReplacedAndTheOtherStays)
{
    const rules::PolicyRuleFields fields{
        .path = "/a", .processName = "/bin/new", .constraint = "TEAM", .operations = 1};
    const auto first = test::policyRule(fields);
    const auto edited = test::policyRule(fields);
    first->setTag("first");
    store.addPolicyRule(first);
    store.addPolicyRule(edited);
    saveRule(document, edited, edits);
    EXPECT_EQ(store.storedRules(), 2U);
    EXPECT_EQ(
        file(), "allow prefix \"/a\" \"/bin/new\" r \"first\" \"TEAM\" \"0\"\n" + ruleLine(edited->fields()));

    const rules::WatchRuleFields watched{.path = "/a", .processName = "/bin/new", .operations = 1};
    const auto firstWatch = test::watchRule(watched);
    const auto editedWatch = test::watchRule(watched);
    store.addWatchRule(firstWatch);
    store.addWatchRule(editedWatch);
    saveRule(document, editedWatch, {.path = "/b", .processName = "/bin/new"});
    EXPECT_EQ(store.storedRules(), 4U);
    EXPECT_EQ(firstWatch->path().view(), "/a");
}

TEST_F(RuleEditing, ARuleThatWasDeletedMeanwhileComesBackOnce)
{
    const auto rule = test::watchRule({.path = "/old", .processName = "/bin/old", .operations = 1});
    store.addWatchRule(rule);
    store.deleteWatchRule(*rule);
    saveRule(document, rule, edits);
    EXPECT_EQ(file(), "watch path \"/new\" \"/bin/new\" rx \"\"\n");
}

TEST_F(RuleEditing, ARuleThatWasReadAnewMeanwhileIsReplaced)
{
    folder.write("Users/Shared/Quorvane/ann.quorvane.rc",
        "watch path /w any r\nallow path /p any r tag\nallow path /q any r\n");
    store.reloadCurrentUserConfiguration();
    const auto watch = std::get<rules::WatchRulePtr>(store.ruleAtIndex(0, true));
    const auto policy = std::get<rules::PolicyRulePtr>(store.ruleAtIndex(1, true));
    store.reloadCurrentUserConfiguration();

    saveRule(document, watch, edits);
    saveRule(document, policy, edits);

    EXPECT_EQ(store.totalRules(true), 3U);
    EXPECT_EQ(test::rowsAsText(store, true), file());
    EXPECT_EQ(file().find("\"/p\""), std::string::npos);
    EXPECT_EQ(file().find("\"/w\""), std::string::npos);
}

TEST_F(RuleEditing, SavingGoesOnWhenTheFileCannotBeWritten)
{
    std::filesystem::remove_all(locations.sharedFolder());
    saveRule(document, test::policyRule({}), edits);
    EXPECT_EQ(store.totalRules(true), 1U);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(store.lastErrorMessage().has_value());
}

} // namespace quorvane::workflow
