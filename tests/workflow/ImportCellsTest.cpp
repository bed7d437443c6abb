#include "workflow/ImportCells.h"
#include "rules/RuleCodes.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::workflow {

namespace {

class ImportCells : public testing::Test {
protected:
    RuleCell cell(std::size_t row, ImportColumn column)
    {
        return importCell(reviewed, present, *reviewed.rows(), row, column);
    }
    // The path cell of a file of one rule.
    RuleCell pathCellOf(rules::PolicyRuleFields fields)
    {
        fields.operations = 1;
        fields.processName = "/bin/sh";
        const auto rule = test::policyRule(std::move(fields));
        reviewed.addPolicyRule(rule);
        const RuleCell shown = cell(0, ImportColumn::path);
        reviewed.deletePolicyRule(*rule);
        return shown;
    }
    // The application cell of a file of one rule.
    RuleCell applicationCellOf(rules::PolicyRuleFields fields)
    {
        const auto rule = test::policyRule(std::move(fields));
        reviewed.addPolicyRule(rule);
        const RuleCell shown = cell(0, ImportColumn::application);
        reviewed.deletePolicyRule(*rule);
        return shown;
    }

    rules::RuleManager reviewed{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    rules::RuleManager present{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
};

} // namespace

TEST_F(ImportCells, APolicyRuleShowsItsTextsInTheReviewsOrder)
{
    reviewed.addPolicyRule(test::policyRule({.policyClass = rules::PolicyClass::deny,
        .policyType = rules::PolicyType::suffix,
        .path = ".doc",
        .processName = "/bin/sh via /usr/bin/env",
        .tag = "shown nowhere",
        .operations = 3}));
    EXPECT_EQ(cell(0, ImportColumn::application).text, "sh via env");
    EXPECT_EQ(cell(0, ImportColumn::application).iconFile, "/bin/sh");
    EXPECT_EQ(cell(0, ImportColumn::tick).text, "");
    EXPECT_EQ(cell(0, ImportColumn::ruleClass).text, "Deny");
    EXPECT_EQ(cell(0, ImportColumn::type).text, "Suffix");
    EXPECT_EQ(cell(0, ImportColumn::path).text, ".doc");
    EXPECT_EQ(cell(0, ImportColumn::operations).text, "rw");
}

TEST_F(ImportCells, AWatchRuleShowsAnEmptyApplicationAndWatch)
{
    reviewed.addWatchRule(test::watchRule({.path = "/usr", .processName = "/bin/sh", .operations = 1}));
    EXPECT_EQ(cell(0, ImportColumn::application).text, "");
    EXPECT_FALSE(cell(0, ImportColumn::application).iconFile);
    EXPECT_EQ(cell(0, ImportColumn::application).description, "sh");
    EXPECT_EQ(cell(0, ImportColumn::ruleClass).text, "Watch");
    EXPECT_EQ(cell(0, ImportColumn::operations).text, "r");
}

TEST_F(ImportCells, UnknownCodesAreErr)
{
    reviewed.addPolicyRule(
        test::policyRule({.policyClass = 2, .policyType = 3, .path = "/usr", .processName = "/bin/sh"}));
    EXPECT_EQ(cell(0, ImportColumn::ruleClass).text, "Err");
    EXPECT_EQ(cell(0, ImportColumn::type).text, "Err");
}

TEST_F(ImportCells, TheApplicationStandsAtTheHeadOfItsGroupOnly)
{
    reviewed.addPolicyRule(test::policyRule({.path = "/usr", .processName = "/nonexistent/tool"}));
    reviewed.addPolicyRule(test::policyRule({.path = "/tmp", .processName = "/nonexistent/tool"}));
    EXPECT_TRUE(cell(0, ImportColumn::application).startsGroup);
    const RuleCell later = cell(1, ImportColumn::application);
    EXPECT_FALSE(later.startsGroup);
    EXPECT_EQ(later.text, "");
    EXPECT_EQ(later.color, CellColor::red);
    EXPECT_EQ(later.description, "tool, program not found");
}

TEST_F(ImportCells, AnApplicationIsRedOnlyWhenNothingExistsAtItsPathWhateverItsConstraint)
{
    const struct {
        const char* why;
        rules::PolicyRuleFields rule;
        CellColor color;
    } cases[] = {
        {"it exists", {.path = "/usr", .processName = "/bin/sh"}, CellColor::black},
        {"its constraint is not asked",
            {.path = "/usr", .processName = "/bin/sh", .constraint = "TEAM123456"}, CellColor::black},
        {"its parent is not asked", {.path = "/usr", .processName = "/bin/sh via /nonexistent/parent"},
            CellColor::black},
        {"it is gone", {.path = "/usr", .processName = "/nonexistent/tool"}, CellColor::red},
        {"any process", {.path = "/usr", .processName = "any"}, CellColor::black},
        {"any process by way of one that is gone",
            {.path = "/usr", .processName = "any via /nonexistent/parent"}, CellColor::black},
        {"a folder of programs", {.path = "/usr", .processName = "/nonexistent/"}, CellColor::black},
        {"no file, unlike in the rules table", {.path = "/usr", .processName = ":KMOD/x"}, CellColor::red},
    };
    for (const auto& c : cases)
        EXPECT_EQ(applicationCellOf(c.rule).color, c.color) << c.why;
}

TEST_F(ImportCells, APathInAHomeFolderIsNeverRed)
{
    const test::TemporaryFolder home;
    const test::EnvironmentVariable variable("HOME", home.path());
    const rules::PolicyRuleFields rule{.policyType = rules::PolicyType::path, .path = "~/nonexistent"};
    EXPECT_EQ(pathCellOf(rule).color, CellColor::black);
    EXPECT_EQ(pathCellOf(rule).description, "");
    EXPECT_TRUE(isPathMissing(test::policyRule(rule))) << "unlike in the rules table";
}

TEST_F(ImportCells, APathIsRedWhenNothingExistsAtItAsItIsWritten)
{
    const struct {
        const char* why;
        rules::PolicyRuleFields rule;
        CellColor color;
    } cases[] = {
        {"it exists", {.policyType = rules::PolicyType::path, .path = "/usr"}, CellColor::black},
        {"it is gone", {.policyType = rules::PolicyType::path, .path = "/nonexistent/a"}, CellColor::red},
        {"a suffix", {.policyType = rules::PolicyType::suffix, .path = "/nonexistent/a"}, CellColor::black},
        {"no path of a file", {.path = ":NVRAM/nonexistent"}, CellColor::black},
        {"relative", {.path = "nonexistent"}, CellColor::black},
        {"a device", {.path = "/dev/nonexistent"}, CellColor::black},
    };
    for (const auto& c : cases)
        EXPECT_EQ(pathCellOf(c.rule).color, c.color) << c.why;
    EXPECT_EQ(pathCellOf({.policyType = rules::PolicyType::path, .path = "/nonexistent/a"}).description,
        "file not found");
}

TEST_F(ImportCells, AWatchedPathIsRedAlikeAndNeverOrange)
{
    reviewed.addWatchRule(
        test::watchRule({.path = "/nonexistent/a", .processName = "/bin/sh", .operations = 1}));
    reviewed.addWatchRule(
        test::watchRule({.path = "/nonexistent/a", .processName = "/bin/sh", .operations = 1}));
    EXPECT_EQ(cell(1, ImportColumn::path).color, CellColor::red);
}

TEST_F(ImportCells, ARuleIsOrangeWhenAnotherOneOfTheFileCoversIt)
{
    // covered by a rule of the user, which does not count here
    present.addPolicyRule(test::policyRule({.path = "any", .processName = "/bin/sh", .operations = 1}));
    EXPECT_EQ(pathCellOf({.path = "/nonexistent/a"}).color, CellColor::red);

    reviewed.addPolicyRule(test::policyRule({.path = "any", .processName = "/bin/sh", .operations = 1}));
    reviewed.addPolicyRule(
        test::policyRule({.path = "/nonexistent/a", .processName = "/bin/sh", .operations = 1}));
    EXPECT_EQ(cell(1, ImportColumn::path).color, CellColor::orange);
    EXPECT_EQ(cell(1, ImportColumn::path).description, "redundant, file not found");
}

TEST_F(ImportCells, MarksARuleThatIsAlreadyPresent)
{
    for (const char* path : {"/usr", "/tmp"})
        reviewed.addPolicyRule(test::policyRule({.path = path, .processName = "/bin/sh", .operations = 1}));
    reviewed.addWatchRule(test::watchRule({.path = "/usr", .processName = "/bin/sh", .operations = 1}));
    present.addPolicyRule(
        test::policyRule({.path = "/tmp", .processName = "/bin/sh", .tag = "other", .operations = 1}));
    present.addWatchRule(test::watchRule({.path = "/usr", .processName = "/bin/sh", .operations = 1}));
    present.applyFilterWithString("hides all of them");

    for (const std::size_t row : {0U, 2U}) {
        for (const auto column : {ImportColumn::tick, ImportColumn::ruleClass, ImportColumn::type,
                 ImportColumn::operations, ImportColumn::path}) {
            const RuleCell marked = cell(row, column);
            EXPECT_TRUE(marked.italic);
            EXPECT_EQ(marked.description, "already present");
            EXPECT_TRUE(marked.toolTip.ends_with("This rule is already present.")) << marked.toolTip;
        }
        EXPECT_EQ(cell(row, ImportColumn::type).color, CellColor::grey);
        EXPECT_EQ(cell(row, ImportColumn::path).color, CellColor::black) << "the path keeps its own colour";
        EXPECT_FALSE(cell(row, ImportColumn::application).italic) << "it may head rules that are new";
    }
    EXPECT_FALSE(cell(1, ImportColumn::path).italic);
    EXPECT_EQ(cell(1, ImportColumn::path).description, "");
}

TEST_F(ImportCells, SortsByWhatTheColumnsShow)
{
    EXPECT_EQ(importColumnSortKey(ImportColumn::application), rules::SortKey::processShortName);
    EXPECT_EQ(importColumnSortKey(ImportColumn::ruleClass), rules::SortKey::shownClass);
    EXPECT_EQ(importColumnSortKey(ImportColumn::path), rules::SortKey::path);
    EXPECT_FALSE(importColumnSortKey(ImportColumn::tick));
}

} // namespace quorvane::workflow
