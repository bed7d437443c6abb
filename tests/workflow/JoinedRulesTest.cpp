#include "workflow/JoinedRules.h"

#include "rules/RuleMarks.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::workflow {

namespace {

const std::string whole = "allow prefix \"/a\" \"/bin/sh\" r \"t\" \"\" \"0\"\n";
// The end of the first line is cut, and the second rule follows on it.
const std::string joined = "allow prefix \"/K\u00e4se\" \"/bin/sh\" r \"\" \"\" \"0\""
                           "deny path \"/b\" \"/bin/cat\" w \"tag\" \"\" \"5\"\n";

std::string pathsOf(const RulesApart& apart)
{
    std::string paths;
    for (const RulesApart::Rule& each : apart.rules)
        paths += askValue(each.rule, [](const auto& fields) { return std::string(fields.path.view()); })
            + (each.isCut ? " (cut) " : " ");
    return paths;
}

} // namespace

TEST(JoinedRules, CountsTheLinesThatHoldSeveral)
{
    EXPECT_EQ(joinedLineCount(whole + joined + whole), 1U);
    EXPECT_EQ(joinedLineCount(whole + whole), 0U);
    EXPECT_EQ(joinedLineCount(""), 0U);
}

TEST(JoinedRules, OfJoinedLinesAloneAreAllThatDecideSomething)
{
    EXPECT_EQ(pathsOf(rulesOfJoinedLines(whole + joined)), "/K\u00e4se /b ");
    EXPECT_EQ(
        pathsOf(rulesOfJoinedLines("allow prefix \"/lost\" \"/bindeny path \"/b\" \"/bin/cat\" w\n")), "/b ");
}

TEST(JoinedRules, OfAFileAreAllOfThemWithThoseOfJoinedLinesApart)
{
    const RulesApart apart = rulesApart(whole + joined);
    EXPECT_EQ(pathsOf(apart), "/a /K\u00e4se /b ");
    EXPECT_EQ(tagOf(apart.rules[2].rule).view(), "tag");
}

TEST(JoinedRules, ARuleThatLostTextIsMarked)
{
    const std::string cut = "allow prefix \"/a\" \"/bin/sh\" r \"very imporallow path \"/b\" \"/bin/sh\" r\n";
    EXPECT_EQ(pathsOf(rulesApart(cut)), "/a (cut) /b ");
}

} // namespace quorvane::workflow
