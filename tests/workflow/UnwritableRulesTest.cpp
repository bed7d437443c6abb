#include "workflow/UnwritableRules.h"

#include "rules/FileLines.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::workflow {

namespace {

using rules::LineEnds;

rules::PolicyRuleFields usual()
{
    return {.policyType = 2, .path = "/a", .processName = "any", .operations = 1};
}

// The words up to the colon that begins what was found; "none" for none.
std::string beginOf(const std::optional<std::string>& words)
{
    return words ? words->substr(0, words->find(':')) : "none";
}

std::string whyNot(rules::PolicyRuleFields fields, LineEnds lineEnds)
{
    return beginOf(whyUnwritable(makeRuleValue(std::move(fields)), lineEnds));
}

constexpr const char* umlaut = "/M\u00fcsik";
constexpr const char* cannotHold
    = "a rules file cannot hold a rule with a double quote, a blank at the end of a field, or a line end";

} // namespace

TEST(UnwritableRules, AreThoseThatDoNotReadBack)
{
    for (const LineEnds lineEnds : {LineEnds::cut, LineEnds::whole}) {
        EXPECT_EQ(whyNot(usual(), lineEnds), "none");
        rules::PolicyRuleFields fields = usual();
        fields.operations = 0;
        EXPECT_EQ(whyNot(fields, lineEnds), "a rules file cannot hold a rule without operations");
        for (const char* path : {"a\"b", "blank ", "two\nlines"}) {
            fields = usual();
            fields.path = path;
            EXPECT_EQ(whyNot(fields, lineEnds), cannotHold) << path;
        }
    }
}

TEST(UnwritableRules, WithLettersBeyondAsciiAreThoseOfCutLines)
{
    rules::PolicyRuleFields fields = usual();
    fields.path = umlaut;
    EXPECT_TRUE(needsWholeLines(makeRuleValue(fields)));
    EXPECT_EQ(whyNot(fields, LineEnds::whole), "none");
    EXPECT_EQ(whyNot(fields, LineEnds::cut), wholeLinesAdvice());

    fields.operations = 0;
    EXPECT_FALSE(needsWholeLines(makeRuleValue(fields))) << "they would not help";
    EXPECT_EQ(whyNot(fields, LineEnds::cut), "a rules file cannot hold a rule without operations");
    EXPECT_FALSE(needsWholeLines(makeRuleValue(usual())));
}

class RewritingCuts : public testing::Test {
protected:
    RewritingCuts()
    {
        fields.path = umlaut;
        line = ruleLine(fields);
    }
    std::string why(const std::string& fileText, LineEnds lineEnds = LineEnds::cut) const
    {
        return beginOf(
            whyRewritingCuts({test::policyRule(usual()), test::policyRule(fields)}, fileText, lineEnds));
    }

    rules::PolicyRuleFields fields = usual();
    std::string line;
    const std::string loss = "the rule stands whole in the rules file and would lose its end";
};

TEST_F(RewritingCuts, ARuleThatStandsWholeInTheFile)
{
    EXPECT_EQ(why(ruleLine(usual()) + line), loss);
    EXPECT_EQ(why(ruleLine(usual()) + line, LineEnds::whole), "none");
}

TEST_F(RewritingCuts, NoRuleThatTheFileLacksOrHasCutAlready)
{
    EXPECT_EQ(why(""), "none");
    EXPECT_EQ(why(ruleLine(usual())), "none");
    EXPECT_EQ(why(std::string(rules::writtenPart(line))), "none");
    EXPECT_EQ(why(line.substr(0, line.size() - 1)), "none") << "a line without its end may have been cut";
}

TEST_F(RewritingCuts, NoRuleWhoseTagTheFileHasOtherwise)
{
    rules::PolicyRuleFields tagged = fields;
    tagged.tag = "tag";
    EXPECT_EQ(why(ruleLine(tagged)), "none");
}

TEST_F(RewritingCuts, NothingInAFileOfPlainRules)
{
    EXPECT_EQ(beginOf(whyRewritingCuts({test::policyRule(usual())}, line, LineEnds::cut)), "none");
    EXPECT_EQ(beginOf(whyRewritingCuts({}, line, LineEnds::cut)), "none");
}

} // namespace quorvane::workflow
