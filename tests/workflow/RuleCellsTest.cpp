#include "workflow/RuleCells.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <ctime>
#include <map>
#include <string>

namespace quorvane::workflow {

namespace {

class RuleCells : public testing::Test {
protected:
    RuleCell cell(std::size_t row, RuleColumn column, bool includeSystemRules = true)
    {
        return ruleCell(store, *store.rows(), row, includeSystemRules, column);
    }
    void add(rules::PolicyRuleFields fields) { store.addPolicyRule(test::policyRule(std::move(fields))); }
    void add(rules::WatchRuleFields fields) { store.addWatchRule(test::watchRule(std::move(fields))); }

    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
};

} // namespace

TEST_F(RuleCells, TheApplicationStandsAtTheHeadOfItsGroupOnly)
{
    const test::TemporaryFolder folder;
    const std::string mail = folder.write("Mail.app/Contents/MacOS/Mail", "");
    add(rules::PolicyRuleFields{.path = "/usr", .processName = mail});
    add(rules::PolicyRuleFields{.path = "/tmp", .processName = mail});

    const RuleCell head = cell(0, RuleColumn::application);
    EXPECT_EQ(head.text, "Mail");
    EXPECT_EQ(head.iconFile, folder.path("Mail.app"));
    EXPECT_TRUE(head.startsGroup);
    EXPECT_EQ(head.color, CellColor::black);
    EXPECT_EQ(head.description, "");

    const RuleCell continuation = cell(1, RuleColumn::application);
    EXPECT_EQ(continuation.text, "");
    EXPECT_FALSE(continuation.iconFile);
    EXPECT_FALSE(continuation.startsGroup);
    EXPECT_EQ(continuation.description, "Mail");
    EXPECT_EQ(continuation.color, CellColor::black);
}

TEST_F(RuleCells, AnApplicationWhoseProgramIsGoneIsRedInEveryRowOfItsGroup)
{
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/Applications/Gone.app/Contents/MacOS/Gone"});
    add(rules::PolicyRuleFields{.path = "/tmp", .processName = "/Applications/Gone.app/Contents/MacOS/Gone"});

    const RuleCell head = cell(0, RuleColumn::application);
    EXPECT_EQ(head.text, "Gone");
    EXPECT_EQ(head.color, CellColor::red);
    EXPECT_EQ(head.description, "program not found");
    EXPECT_EQ(head.toolTip,
        "/Applications/Gone.app/Contents/MacOS/Gone\nNothing exists at the path of the program.");

    // the text is blank there, but the colour is set
    const RuleCell continuation = cell(1, RuleColumn::application);
    EXPECT_EQ(continuation.text, "");
    EXPECT_EQ(continuation.color, CellColor::red);
    EXPECT_EQ(continuation.description, "Gone, program not found");
}

TEST_F(RuleCells, ARedApplicationSaysWhatIsWrong)
{
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh", .constraint = "TEAM123456"});
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh via /usr/bin/missing"});
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "any via /usr/bin/missing"});
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/usr/bin/missing", .system = true});
    std::map<std::string, RuleCell> cells;
    for (std::size_t row = 0; row < 4; ++row) {
        const RuleCell shown = cell(row, RuleColumn::application);
        cells[shown.text + (shown.toolTip.find("Constraint") != std::string::npos ? " pinned" : "")] = shown;
    }
    EXPECT_EQ(cells["sh pinned"].color, CellColor::red);
    EXPECT_EQ(cells["sh pinned"].description, "does not match its constraint");
    EXPECT_NE(cells["sh pinned"].toolTip.find("does not match the rule's constraint"), std::string::npos);
    EXPECT_EQ(cells["sh via missing"].color, CellColor::red);
    EXPECT_EQ(cells["sh via missing"].description, "parent program not found");
    EXPECT_NE(cells["sh via missing"].toolTip.find("the parent program"), std::string::npos);
    EXPECT_EQ(cells["Any Process via missing"].color, CellColor::black);
    EXPECT_EQ(cells["missing"].color, CellColor::black) << "a system rule";
}

TEST_F(RuleCells, ThePathCellTellsNothingOfTheProgram)
{
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/nonexistent/program", .operations = 1});
    EXPECT_EQ(cell(0, RuleColumn::path).color, CellColor::black);
    EXPECT_EQ(cell(0, RuleColumn::path).toolTip, "/usr");
}

TEST_F(RuleCells, AParentIsNamedAfterTheApplication)
{
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh via /usr/sbin/cron"});
    EXPECT_EQ(cell(0, RuleColumn::application).text, "sh via cron");
}

TEST_F(RuleCells, AnotherConstraintBeginsAnotherGroup)
{
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh"});
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh", .constraint = "ABCDE12345"});
    EXPECT_TRUE(cell(1, RuleColumn::application).startsGroup);
    EXPECT_EQ(cell(1, RuleColumn::application).text, "sh");
    EXPECT_NE(cell(1, RuleColumn::application).toolTip.find("ABCDE12345"), std::string::npos);
}

TEST_F(RuleCells, APolicyRuleBelowAWatchRuleBeginsAGroup)
{
    add(rules::WatchRuleFields{.path = "/usr", .processName = "/bin/sh"});
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh"});
    EXPECT_TRUE(cell(1, RuleColumn::application).startsGroup);
}

TEST_F(RuleCells, TheRowAboveIsTheOneInViewNotTheOneInTheStore)
{
    // given a system rule at the head of the group
    add(rules::PolicyRuleFields{.path = "/usr", .processName = "/bin/sh", .system = true});
    add(rules::PolicyRuleFields{.path = "/tmp", .processName = "/bin/sh"});
    // then the user's rule heads the group when system rules are hidden
    EXPECT_EQ(cell(1, RuleColumn::application, true).text, "");
    EXPECT_EQ(cell(0, RuleColumn::application, false).text, "sh");
}

TEST_F(RuleCells, AWatchRuleShowsNoApplicationButNamesItInWords)
{
    add(rules::WatchRuleFields{.path = "/usr", .processName = "/bin/sh via any"});
    const RuleCell application = cell(0, RuleColumn::application);
    EXPECT_EQ(application.text, "");
    EXPECT_FALSE(application.iconFile);
    EXPECT_FALSE(application.startsGroup);
    EXPECT_EQ(application.description, "sh via any");
    EXPECT_EQ(application.toolTip, "/bin/sh via any");
}

TEST_F(RuleCells, TheStateImageTellsSystemRulesAndNewPolicyRules)
{
    const auto now = static_cast<std::uint64_t>(std::time(nullptr));
    add(rules::WatchRuleFields{.path = "/a", .processName = "/bin/a", .system = true});
    add(rules::WatchRuleFields{.path = "/b", .processName = "/bin/a"});
    add(rules::PolicyRuleFields{.path = "/c", .processName = "/bin/a", .created = now, .system = true});
    add(rules::PolicyRuleFields{.path = "/d", .processName = "/bin/a", .created = now - 60});
    add(rules::PolicyRuleFields{.path = "/e", .processName = "/bin/a", .created = now - 90000});

    const struct {
        StateImage image;
        const char* description;
    } expected[] = {{StateImage::system, "system rule"}, {StateImage::none, ""},
        {StateImage::system, "system rule"}, {StateImage::recent, "new rule"}, {StateImage::none, ""}};
    for (std::size_t row = 0; row < std::size(expected); ++row) {
        EXPECT_EQ(cell(row, RuleColumn::state).image, expected[row].image) << row;
        EXPECT_EQ(cell(row, RuleColumn::state).description, expected[row].description) << row;
        EXPECT_EQ(cell(row, RuleColumn::state).text, "") << row;
    }
}

TEST_F(RuleCells, ClassAndTypeAreNamedAndErrWhenUnknown)
{
    add(rules::WatchRuleFields{.policyType = 2, .path = "/a", .processName = "/bin/a"});
    add(rules::PolicyRuleFields{.policyClass = 0, .policyType = 0, .path = "/a", .processName = "/bin/a"});
    add(rules::PolicyRuleFields{.policyClass = 1, .policyType = 1, .path = "/a", .processName = "/bin/a"});
    add(rules::PolicyRuleFields{.policyClass = 2, .policyType = 3, .path = "/a", .processName = "/bin/a"});
    add(rules::PolicyRuleFields{.policyClass = 4, .policyType = 4, .path = "/a", .processName = "/bin/a"});

    const char* const expected[][2]
        = {{"Watch", "Suffix"}, {"Allow", "Prefix"}, {"Deny", "Path"}, {"Err", "Err"}, {"Err", "Err"}};
    for (std::size_t row = 0; row < std::size(expected); ++row) {
        EXPECT_EQ(cell(row, RuleColumn::ruleClass).text, expected[row][0]) << row;
        EXPECT_EQ(cell(row, RuleColumn::type).text, expected[row][1]) << row;
    }
}

TEST_F(RuleCells, OperationsAndTagAreShownForBothKinds)
{
    add(rules::WatchRuleFields{.path = "/a", .processName = "/bin/a", .tag = "logs", .operations = 33});
    add(rules::PolicyRuleFields{.path = "/a", .processName = "/bin/a", .tag = {}, .operations = 31});
    EXPECT_EQ(cell(0, RuleColumn::operations).text, "r");
    EXPECT_EQ(cell(1, RuleColumn::operations).text, "rwcmx");
    EXPECT_EQ(cell(0, RuleColumn::tag).text, "logs");
    EXPECT_EQ(cell(1, RuleColumn::tag).text, "");
    EXPECT_EQ(cell(0, RuleColumn::tag).color, CellColor::blue);
    EXPECT_EQ(cell(1, RuleColumn::tag).color, CellColor::blue);
}

TEST_F(RuleCells, AMissingPathIsRedForBothKinds)
{
    add(rules::WatchRuleFields{.path = "/nonexistent/a", .processName = "/bin/a", .operations = 1});
    add(rules::PolicyRuleFields{.path = "/nonexistent/b", .processName = "/bin/a", .operations = 1});
    add(rules::PolicyRuleFields{.path = "/", .processName = "/bin/a", .operations = 2});
    EXPECT_EQ(cell(0, RuleColumn::path).color, CellColor::red);
    EXPECT_EQ(cell(0, RuleColumn::path).description, "file not found");
    EXPECT_EQ(cell(1, RuleColumn::path).color, CellColor::red);
    EXPECT_EQ(cell(2, RuleColumn::path).color, CellColor::black);
    EXPECT_EQ(cell(2, RuleColumn::path).description, "");
}

TEST_F(RuleCells, ARedundantRuleIsOrangeEvenWhenItsPathIsMissing)
{
    add(rules::PolicyRuleFields{.path = "/nonexistent/", .processName = "/bin/a", .operations = 3});
    add(rules::PolicyRuleFields{
        .policyType = 1, .path = "/nonexistent/b", .processName = "/bin/a", .operations = 1});
    const RuleCell path = cell(1, RuleColumn::path);
    EXPECT_EQ(path.color, CellColor::orange);
    EXPECT_EQ(path.description, "redundant, file not found");
    EXPECT_NE(path.toolTip.find("/nonexistent/b\n"), std::string::npos);
    EXPECT_NE(path.toolTip.find(R"(covered by allow prefix "/nonexistent/" "/bin/a" rw)"), std::string::npos);
}

TEST_F(RuleCells, AWatchRuleIsNeverOrange)
{
    add(rules::WatchRuleFields{.path = "/", .processName = "/bin/a", .operations = 3});
    add(rules::WatchRuleFields{.path = "/", .processName = "/bin/a", .operations = 1});
    EXPECT_EQ(cell(1, RuleColumn::path).color, CellColor::black);
}

TEST_F(RuleCells, ARuleThatDoesNotReadBackIsWarnedOfInItsToolTip)
{
    add(rules::PolicyRuleFields{.path = "/", .processName = "/bin/a", .operations = 0});
    EXPECT_NE(cell(0, RuleColumn::path).toolTip.find("does not read back"), std::string::npos);
    EXPECT_EQ(cell(0, RuleColumn::path).description, "does not read back");
    EXPECT_EQ(cell(0, RuleColumn::path).color, CellColor::black);
}

} // namespace quorvane::workflow
