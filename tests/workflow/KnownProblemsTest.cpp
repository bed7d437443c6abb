#include "workflow/KnownProblems.h"
#include "rules/RuleCodes.h"
#include "tests/rules/RandomRules.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TemporaryFolder.h"
#include "workflow/RuleOverlaps.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace quorvane::workflow {

namespace {

class KnownProblemsTest : public testing::Test {
protected:
    KnownProblemsTest() { facts.existing = {"/bin/a", "/bin/c", "/Users/a", "/"}; }

    rules::PolicyRulePtr add(rules::PolicyRuleFields fields)
    {
        if (fields.operations == 0)
            fields.operations = 1;
        if (fields.processName.isNull())
            fields.processName = "any";
        const rules::PolicyRulePtr rule = test::policyRule(std::move(fields));
        store.addPolicyRule(rule);
        return rule;
    }
    ProblemListsPtr follow(bool withOverlaps = false)
    {
        return known.follow(store.storedRows(), withOverlaps);
    }
    RulesPlace place() { return RulesPlace::of(facts); }

    static std::string text(const ProblemLists& lists)
    {
        std::ostringstream text;
        for (const FindingKind kind : allFindingKinds) {
            for (const KnownProblem& problem : lists.of(kind))
                text << line(problem.rule, problem.finding, problem.other);
        }
        return text.str();
    }
    static std::string line(
        const rules::RuleRef& rule, const RuleFinding& finding, const std::optional<rules::RuleRef>& other)
    {
        std::ostringstream text;
        text << findingName(finding.kind) << ' ' << addressOf(rule) << ' ' << findingReason(finding) << ' '
             << (other ? addressOf(*other) : nullptr) << '\n';
        return text.str();
    }
    // As found by scanning all rules.
    std::string plainText()
    {
        const std::vector<rules::RuleRef> rules = store.allRules();
        std::vector<const rules::PolicyRuleFields*> policies;
        for (const rules::RuleRef& rule : rules)
            policies.push_back(policyRuleIn(rule) == nullptr || isSystemRule(rule)
                    ? nullptr
                    : &policyRuleIn(rule)->fields());
        const std::vector<std::size_t> overlaps = firstOverlaps(policies);
        std::ostringstream text;
        for (const FindingKind kind : allFindingKinds) {
            for (std::size_t place = 0; place < rules.size(); ++place) {
                for (const RuleFinding& finding :
                    findingsForRule(store, rules[place], {{kind}, this->place()}))
                    text << line(rules[place], finding, recordAt(finding.other));
                if (kind == FindingKind::overlap && overlaps[place] != noOverlap)
                    text << line(rules[place], {kind}, rules[overlaps[place]]);
            }
        }
        return text.str();
    }
    std::optional<rules::RuleRef> recordAt(const rules::PolicyRule* rule) const
    {
        for (const rules::RuleRef& each : store.allRules()) {
            if (rule != nullptr && addressOf(each) == rule)
                return each;
        }
        return std::nullopt;
    }

    test::FakeProgramFacts facts;
    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    KnownProblems known{RulesPlace::of(facts)};
};

// Adds, removes and changes a few rules at random.
rules::ChangeSet randomChange(test::RandomRules& random, const std::vector<rules::RuleRef>& rules)
{
    rules::ChangeSet change;
    for (std::size_t more = random.below(3); more > 0; --more) {
        const rules::RuleRef rule = random.below(4) == 0 ? rules::RuleRef(test::watchRule(random.watch()))
                                                         : rules::RuleRef(test::policyRule(random.policy()));
        change.added.push_back({rule, valueOf(rule), {}});
    }
    if (!rules.empty() && random.below(2) == 0)
        change.removed.push_back({random.oneOf(rules)});
    if (!rules.empty() && random.below(2) == 0) {
        const rules::RuleRef rule = random.oneOf(rules);
        const rules::RuleValue after = askValue(valueOf(rule), [&](auto fields) {
            fields.path = random.path();
            fields.operations = random.operations();
            return rules::RuleValue(makeRuleValue(fields));
        });
        if (change.removed.empty() || change.removed.front().rule != rule)
            change.changed.push_back({rule, valueOf(rule), after});
    }
    return change;
}

} // namespace

TEST_F(KnownProblemsTest, AreRightAgainAfterARuleWasEditedWhileItsRowsWereLookedAt)
{
    const rules::PolicyRulePtr covering = add({.path = "/a/", .processName = "/bin/a"});
    const rules::PolicyRulePtr edited = add({.path = "/b/", .processName = "/bin/a"});
    add({.policyType = rules::PolicyType::path, .path = "/a/x", .processName = "/bin/a"});
    const auto rows = store.storedRows();
    // Until the rows are rebuilt, it is between two rules of another group.
    edited->setProcessName("/bin/c");
    known.follow(rows, false);
    const std::string byDifference = text(*follow());
    EXPECT_EQ(byDifference, plainText());
    EXPECT_NE(byDifference.find("redundant"), std::string::npos);
}

TEST_F(KnownProblemsTest, KeptByDifferenceAreThoseFoundAfresh)
{
    for (const unsigned seed : {1U, 2U, 3U}) {
        test::RandomRules random(seed);
        for (int step = 0; step < 80; ++step) {
            store.apply(randomChange(random, store.allRules()));
            const bool withOverlaps = random.below(3) != 0;
            const ProblemListsPtr kept = follow(withOverlaps);
            ASSERT_EQ(text(*kept), text(*KnownProblems(place()).follow(store.storedRows(), withOverlaps)))
                << "seed " << seed << ", step " << step;
            if (withOverlaps) {
                ASSERT_EQ(text(*kept), plainText()) << "seed " << seed << ", step " << step;
            }
        }
    }
}

TEST_F(KnownProblemsTest, NameTheRuleThatCovers)
{
    const auto wide = add({.path = "/"});
    const auto narrow = add({.path = "/Users/a"});
    const auto lists = follow();
    ASSERT_EQ(lists->of(FindingKind::redundant).size(), 1U);
    EXPECT_EQ(lists->of(FindingKind::redundant).front().rule, rules::RuleRef(narrow));
    EXPECT_EQ(lists->of(FindingKind::redundant).front().other, rules::RuleRef(wide));
}

TEST_F(KnownProblemsTest, LookAtNothingAgainThatStaysAsItIs)
{
    add({.path = "/gone"});
    const auto second = add({.path = "/gone too", .processName = "/bin/a"});
    follow();
    facts.questions = 0;
    EXPECT_EQ(follow()->of(FindingKind::missingPath).size(), 2U);
    EXPECT_EQ(facts.questions, 0);
    second->setPath("/Users/a");
    store.rebuildRulesCache();
    EXPECT_EQ(follow()->of(FindingKind::missingPath).size(), 1U);
    EXPECT_EQ(facts.questions, 2); // its program, its path
}

TEST_F(KnownProblemsTest, SeeWhatHasChangedInTheFilesOnlyWhenTheyForget)
{
    add({.path = "/gone"});
    follow();
    facts.existing.insert("/gone");
    EXPECT_EQ(follow()->of(FindingKind::missingPath).size(), 1U);
    known.forget(place());
    EXPECT_TRUE(follow()->of(FindingKind::missingPath).empty());
    known.forget(RulesPlace::nowhere());
    facts.existing.clear();
    EXPECT_TRUE(follow()->of(FindingKind::missingPath).empty());
}

TEST_F(KnownProblemsTest, AreOfRulesThatTheSearchHides)
{
    add({.path = "/gone"});
    store.applyFilterWithString("other");
    EXPECT_EQ(follow()->of(FindingKind::missingPath).size(), 1U);
}

TEST_F(KnownProblemsTest, AreWhatTheyWereAfterAStop)
{
    add({.path = "/gone"});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(known.follow(store.storedRows(), true, stop.get_token()), nullptr);
    EXPECT_EQ(follow()->of(FindingKind::missingPath).size(), 1U);
}

TEST_F(KnownProblemsTest, NameTheRulesThatJoinedLinesAreReadAsWhileTheFileHoldsThem)
{
    // given a file whose first line was cut, so that the next rule was joined to it
    const test::TemporaryFolder folder;
    const std::string file = folder.write("rules.rc",
        "allow prefix \"/Users/a\" \"any\" r \"\" \"\" \"0\"deny path \"/b\" \"any\" w \"\" \"\" \"0\"\n"
        "deny path \"/\" \"any\" w \"\" \"\" \"0\"\n");
    store.addFileContents(file, false);
    store.rebuildRulesCache();
    known = KnownProblems(place(), file);

    const auto lists = follow();
    ASSERT_EQ(lists->of(FindingKind::joined).size(), 1U);
    EXPECT_EQ(ruleText(lists->of(FindingKind::joined).front().rule),
        "allow prefix \"/Users/a\" \"any\" r \"\" \"\" \"0\"");
    folder.write("rules.rc", "");
    EXPECT_TRUE(follow()->of(FindingKind::joined).empty());
}

TEST_F(KnownProblemsTest, TellOfOverlapsOnlyWhenAskedFor)
{
    const auto first = add({.path = "/Users/a"});
    const auto second = add({.policyClass = 1, .path = "/"});
    EXPECT_TRUE(follow(false)->of(FindingKind::overlap).empty());
    const auto lists = follow(true);
    ASSERT_EQ(lists->of(FindingKind::overlap).size(), 1U);
    EXPECT_EQ(lists->of(FindingKind::overlap).front().rule, rules::RuleRef(second));
    EXPECT_EQ(lists->of(FindingKind::overlap).front().other, rules::RuleRef(first));
    EXPECT_TRUE(follow(false)->of(FindingKind::overlap).empty());
    EXPECT_EQ(follow(true)->of(FindingKind::overlap).size(), 1U);
}

} // namespace quorvane::workflow
