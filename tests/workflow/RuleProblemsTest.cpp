#include "workflow/RuleProblems.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

using Fix = RuleProblem::Fix;

class RuleProblems : public testing::Test {
protected:
    RuleProblems() { facts.existing = {"/bin/sh", "/etc/hosts"}; }

    std::vector<RuleProblem> problemsOf(
        rules::PolicyRuleFields fields, rules::LineEnds lineEnds = rules::LineEnds::cut)
    {
        if (fields.operations == 0)
            fields.operations = 1;
        return problemsOfRuleAlone(makeRuleValue(std::move(fields)), RulesPlace::of(facts), lineEnds);
    }
    RuleProblem onlyProblemOf(rules::PolicyRuleFields fields)
    {
        const auto problems = problemsOf(std::move(fields));
        EXPECT_EQ(problems.size(), 1U);
        return problems.empty() ? RuleProblem() : problems.front();
    }

    test::FakeProgramFacts facts;
};

} // namespace

TEST_F(RuleProblems, AreNoneWhereNothingIsWrong)
{
    EXPECT_TRUE(problemsOf({.path = "/etc/hosts", .processName = "/bin/sh"}).empty());
}

TEST_F(RuleProblems, NameTheProgramThatIsGoneAndOfferToChooseIt)
{
    const RuleProblem own = onlyProblemOf({.path = "any", .processName = "/bin/old"});
    EXPECT_EQ(own.text, "Program is gone: nothing exists at /bin/old.");
    EXPECT_EQ(own.fix, Fix::chooseProgram);
    const RuleProblem parents = onlyProblemOf({.path = "any", .processName = "/bin/sh via /bin/old"});
    EXPECT_EQ(parents.text, "Parent program is gone: nothing exists at /bin/old.");
    EXPECT_EQ(parents.fix, Fix::chooseParent);
}

TEST_F(RuleProblems, ShowTheStoredDigestBesideThatOfTheProgram)
{
    const std::string stored(64, 'a');
    facts.sha256s["/bin/sh"] = "now";
    const RuleProblem problem
        = onlyProblemOf({.path = "any", .processName = "/bin/sh", .constraint = stored});
    EXPECT_EQ(problem.text, "Digest differs: stored " + stored + ", now now.");
    EXPECT_EQ(problem.fix, Fix::rebind);
    const std::string shorter(40, 'b');
    facts.sha1s["/bin/sh"] = "short";
    EXPECT_EQ(onlyProblemOf({.path = "any", .processName = "/bin/sh", .constraint = shorter}).text,
        "Digest differs: stored " + shorter + ", now short.");
}

TEST_F(RuleProblems, ShowTheStoredTeamBesideThatOfTheProgram)
{
    EXPECT_EQ(onlyProblemOf({.path = "any", .processName = "/bin/sh", .constraint = "ONE"}).text,
        "Team differs: stored ONE, now none that is proven.");
    facts.teams["/bin/sh"] = "OTHER";
    EXPECT_EQ(onlyProblemOf({.path = "any", .processName = "/bin/sh", .constraint = "ONE"}).text,
        "Team differs: stored ONE, now OTHER.");
}

TEST_F(RuleProblems, NameThePathThatIsGone)
{
    const RuleProblem problem = onlyProblemOf({.policyType = 1, .path = "/gone", .processName = "/bin/sh"});
    EXPECT_EQ(problem.text, "Path is gone: nothing exists at /gone.");
    EXPECT_EQ(problem.fix, Fix::drop);
}

TEST_F(RuleProblems, SayWhatTheRulesFileHasNoPlaceFor)
{
    const RuleProblem problem
        = onlyProblemOf({.policyType = 2, .path = "a\"b", .processName = "/bin/sh", .operations = 1});
    EXPECT_TRUE(
        problem.text.starts_with("Does not read back: a rules file cannot hold a rule with a double quote"))
        << problem.text;
    EXPECT_EQ(problem.fix, Fix::none);
}

TEST_F(RuleProblems, AreNothingThatTheMissingPlaceCouldTell)
{
    const auto problems = problemsOfRuleAlone(
        makeRuleValue(rules::PolicyRuleFields{.path = "/gone", .processName = "/bin/old", .operations = 1}),
        RulesPlace::nowhere(), rules::LineEnds::cut);
    EXPECT_TRUE(problems.empty());
}

TEST_F(RuleProblems, TellOfTheOtherRuleInWords)
{
    const rules::RuleValue wide
        = makeRuleValue(rules::PolicyRuleFields{.path = "/etc/", .processName = "/bin/sh", .operations = 3});
    const RuleProblem covered = problemWith(FindingKind::redundant, wide);
    EXPECT_EQ(covered.text, "Covered by: sh may read and write anything in /etc/.");
    EXPECT_EQ(covered.fix, Fix::drop);
    EXPECT_EQ(problemWith(FindingKind::overlap, wide).text,
        "Overlaps with: sh may read and write anything in /etc/.");
}

TEST_F(RuleProblems, FindTheCoveringRuleAmongEqualOnes)
{
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    const rules::PolicyRuleFields fields{.path = "/etc/", .processName = "/bin/sh", .operations = 3};
    const rules::PolicyRulePtr first = test::policyRule(fields);
    const rules::PolicyRulePtr second = test::policyRule(fields);
    store.addPolicyRule(first);
    EXPECT_EQ(storedCoveringRule(store, first), std::nullopt);
    store.addPolicyRule(second);
    EXPECT_EQ(storedCoveringRule(store, first), rules::RuleRef(second));
    EXPECT_EQ(storedCoveringRule(store, second), rules::RuleRef(first));
}

} // namespace quorvane::workflow
