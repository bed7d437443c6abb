#include "workflow/DifferenceText.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

rules::RuleValue policyTagged(rules::NullableText tag, std::uint64_t created = 0)
{
    return makeRuleValue(rules::PolicyRuleFields{
        .path = "/a", .processName = "any", .tag = std::move(tag), .operations = 3, .created = created});
}

rules::RuleValue watchTagged(rules::NullableText tag)
{
    return makeRuleValue(
        rules::WatchRuleFields{.path = "/w", .processName = "any", .tag = std::move(tag), .operations = 1});
}

} // namespace

TEST(ChangeText, NamesTagAndCreationTimeBeforeAndAfter)
{
    const struct {
        const char* why;
        rules::RuleValue before, after;
        std::string text;
    } cases[] = {
        {"nothing", policyTagged("x", 1), policyTagged("x", 1), ""},
        {"another tag", policyTagged("x"), policyTagged("y"), R"(tag changed from "x" to "y")"},
        {"a first tag", policyTagged(""), policyTagged("y"), R"(tag set to "y")"},
        {"no tag any more", policyTagged("x"), policyTagged(""), R"(tag "x" removed)"},
        {"a watch rule", watchTagged("x"), watchTagged("y"), R"(tag changed from "x" to "y")"},
        {"a time", policyTagged("", 0), policyTagged("", 1478000000),
            "creation time changed from none to 2016-11-01 11:33:20 UTC"},
        {"times that no calendar reaches", policyTagged("", 253402300800), policyTagged("", UINT64_MAX),
            "creation time changed from 253402300800 to -1"},
        {"both", policyTagged("x", 1), policyTagged("", 0),
            R"(tag "x" removed, creation time changed from 1970-01-01 00:00:01 UTC to none)"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(changeText(c.before, c.after), c.text) << c.why;
}

TEST(ChangeText, NamesWhatAChangeOfManyRulesMayChange)
{
    rules::PolicyRuleFields fields{.path = "/a", .processName = "/bin/sh", .operations = 1};
    const rules::RuleValue before = makeRuleValue(fields);
    fields.policyClass = 1;
    fields.processName = "/bin/zsh";
    fields.operations = 19;
    fields.constraint = "TEAM";
    fields.tag = "new";
    EXPECT_EQ(changeText(before, makeRuleValue(fields)),
        R"(class changed from allow to deny, process changed from "/bin/sh" to "/bin/zsh", )"
        R"(operations changed from r to rwx, constraint changed from "" to "TEAM", tag set to "new")");

    rules::WatchRuleFields watch{.path = "/a", .processName = "any", .operations = 1};
    const rules::RuleValue watchBefore = makeRuleValue(watch);
    watch.operations = 2;
    EXPECT_EQ(changeText(watchBefore, makeRuleValue(watch)), "operations changed from r to w");
}

TEST(DifferenceTexts, SayWhatHappenedToEachRule)
{
    const rules::RulesDifference difference{
        {policyTagged("new")}, {watchTagged("")}, {{policyTagged("x"), policyTagged("y")}}};

    EXPECT_EQ(differenceTexts(difference),
        (std::vector<std::string>{R"(added: allow prefix "/a" "any" rw "new" "" "0")",
            R"(removed: watch prefix "/w" "any" r "")",
            R"(changed: allow prefix "/a" "any" rw "y" "" "0": tag changed from "x" to "y")"}));
    EXPECT_TRUE(differenceTexts({}).empty());
}

TEST(DifferenceSummary, CountsWithoutWhatIsNone)
{
    const rules::RuleValue one = policyTagged("");
    const std::pair<rules::RuleValue, rules::RuleValue> change{policyTagged("x"), policyTagged("y")};

    EXPECT_EQ(differenceSummary({}), "no rule changed");
    EXPECT_EQ(differenceSummary({{one}, {}, {}}), "1 rule added");
    EXPECT_EQ(differenceSummary({{}, {one, one}, {}}), "2 rules removed");
    EXPECT_EQ(differenceSummary({{one, one}, {one}, {change}}), "2 rules added, 1 removed, 1 changed");
    EXPECT_EQ(differenceSummary({{}, {}, {change}}), "1 rule changed");
}

TEST(ReportText, NamesWhatAMergeKept)
{
    EXPECT_EQ(reportText({rules::MergeReport::tagSetOnBothSides, policyTagged("x"), policyTagged("y")}),
        R"(both sides changed the tag: "x" is kept, not "y": allow prefix "/a" "any" rw "x" "" "0")");
    EXPECT_EQ(reportText({rules::MergeReport::keptForItsTag, watchTagged("x"), watchTagged("")}),
        R"(one side removed the rule, the other changed its tag: it is kept: watch prefix "/w" "any" r "x")");
    EXPECT_EQ(reportText({rules::MergeReport::addedWithOtherTag, watchTagged("x"), watchTagged("y")}),
        R"(both sides added the rule: the tag "x" is kept, not "y": watch prefix "/w" "any" r "x")");
}

} // namespace quorvane::workflow
