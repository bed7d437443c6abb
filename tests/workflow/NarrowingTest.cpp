#include "workflow/Narrowing.h"
#include "rules/RuleCodes.h"
#include "tests/rules/RandomRules.h"
#include "tests/support/FakeProgramFacts.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quorvane::workflow {

namespace {

class NarrowingTest : public testing::Test {
protected:
    void add(rules::PolicyRuleFields fields)
    {
        fields.operations = 1;
        store.addPolicyRule(test::policyRule(std::move(fields)));
    }
    // Adds one rule of each class, including a watch rule, and a system rule.
    void addRules()
    {
        store.addWatchRule(
            test::watchRule({.path = "/w", .processName = "/bin/a", .tag = "one", .operations = 1}));
        add({.path = "/a", .processName = "/bin/a", .tag = "one"});
        add({.policyClass = 1, .policyType = 2, .path = "/b", .processName = "/bin/a via /bin/b"});
        add({.policyClass = 1, .path = "/c", .processName = "/bin/c", .tag = "two", .system = true});
    }
    ProblemListsPtr problems()
    {
        return KnownProblems(RulesPlace::of(facts)).follow(store.storedRows(), false);
    }
    static std::string pathsOf(const rules::RuleRows& rows, bool includeSystemRules = true)
    {
        std::string paths;
        for (std::size_t row = 0; row < rows.count(includeSystemRules); ++row)
            paths += visitRule(rows.at(row, includeSystemRules),
                [](const auto& record) { return std::string(record.path().view()); });
        return paths;
    }
    std::string narrowed(RuleCriteria criteria)
    {
        return pathsOf(*Narrowing(std::move(criteria), problems()).narrowed(*store.rows()));
    }

    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    test::FakeProgramFacts facts;
};

} // namespace

TEST_F(NarrowingTest, LeavesRulesThatMeetAllThatIsAskedFor)
{
    addRules();
    EXPECT_EQ(narrowed({}), "/w/a/b/c");
    EXPECT_EQ(narrowed({.classes = {rules::PolicyClass::deny}}), "/b/c");
    EXPECT_EQ(narrowed({.types = {rules::PolicyType::suffix}}), "/b");
    EXPECT_EQ(narrowed({.states = {rules::RuleState::system}}), "/c");
    EXPECT_EQ(narrowed({.states = {rules::RuleState::user}}), "/w/a/b");
    EXPECT_EQ(narrowed({.tags = {"one"}}), "/w/a");
    EXPECT_EQ(narrowed({.tags = {""}}), "/b");
    EXPECT_EQ(narrowed({.programs = {"/bin/a"}}), "/w/a/b");
    EXPECT_EQ(narrowed({.classes = {rules::PolicyClass::allow}, .programs = {"/bin/a"}}), "/a");
    EXPECT_EQ(narrowed({.classes = {rules::PolicyClass::allow}, .tags = {"two"}}), "");
}

TEST_F(NarrowingTest, KeepsSystemRulesApartFromTheUsers)
{
    addRules();
    Narrowing narrowing({.classes = {rules::PolicyClass::deny}}, nullptr);
    const auto rows = narrowing.narrowed(*store.rows());
    EXPECT_EQ(pathsOf(*rows, false), "/b");
    EXPECT_EQ(pathsOf(*rows, true), "/b/c");
}

TEST_F(NarrowingTest, FollowsSearchAndOrder)
{
    addRules();
    Narrowing narrowing({.programs = {"/bin/a"}}, nullptr);
    store.applyFilterWithString("/bin/b");
    EXPECT_EQ(pathsOf(*narrowing.narrowed(*store.rows())), "/b");
    store.applyFilterWithString("");
    store.sortIndexUsingDescriptors({{rules::SortKey::path, false}});
    EXPECT_EQ(pathsOf(*narrowing.narrowed(*store.rows())), "/w/b/a");
}

TEST_F(NarrowingTest, LooksAtNewAndChangedRules)
{
    addRules();
    Narrowing narrowing({.tags = {"one"}}, nullptr);
    narrowing.narrowed(*store.rows());
    add({.path = "/d", .processName = "/bin/z", .tag = "one"});
    std::get<rules::WatchRulePtr>(store.allRules().front())->setTag("other");
    store.rebuildRulesCache();
    EXPECT_EQ(pathsOf(*narrowing.narrowed(*store.rows())), "/a/d");
}

TEST_F(NarrowingTest, ShowsTheRulesOfWhichAProblemIsKnown)
{
    facts.existing = {"/bin/a", "/w"};
    addRules();
    EXPECT_EQ(narrowed({.findings = {FindingKind::missingPath}}), "/a");
    EXPECT_EQ(narrowed({.findings = {FindingKind::invalidProgram}}), "/b");
    EXPECT_EQ(narrowed({.classes = {rules::PolicyClass::deny}, .findings = {FindingKind::missingPath}}), "");
}

TEST_F(NarrowingTest, KeepsAChangedRulesProblemUntilProblemsAreFoundAgain)
{
    addRules();
    Narrowing narrowing({.findings = {FindingKind::missingPath}}, problems());
    const rules::PolicyRulePtr rule = store.policyRules().front();
    rule->setTag("changed");
    add({.path = "/new", .processName = "/bin/a"});
    store.rebuildRulesCache();
    EXPECT_EQ(pathsOf(*narrowing.narrowed(*store.rows())), "/w/a");
    EXPECT_EQ(narrowed({.findings = {FindingKind::missingPath}}), "/w/a/new");
}

TEST_F(NarrowingTest, GoesOnWhereItWasStopped)
{
    addRules();
    Narrowing narrowing({.tags = {"one"}}, nullptr);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(narrowing.follow(*store.rows(), stop.get_token()));
    EXPECT_TRUE(narrowing.follow(*store.rows()));
    EXPECT_EQ(pathsOf(*narrowing.narrowed(*store.rows())), "/w/a");
}

// Changes of more than half of all numbers make the store renumber its rules from time to time.
TEST_F(NarrowingTest, EqualsAWalkOfAllRowsOverRandomChanges)
{
    test::RandomRules random(7);
    const RuleCriteria criteria{.classes = {rules::PolicyClass::allow}, .tags = {"work"}};
    Narrowing narrowing(criteria, nullptr);
    for (int step = 0; step < 300; ++step) {
        const std::vector<rules::RuleRef> rules = store.allRules();
        if (rules.empty() || random.below(3) > 0)
            store.addPolicyRule(test::policyRule(random.policy()));
        else if (const rules::RuleRef& rule = rules[random.below(rules.size())]; random.below(2) == 0)
            visitRule(rule, [&random](auto& record) { record.setTag(random.tag()); });
        else
            store.deletePolicyRule(*policyRuleIn(rule));
        store.rebuildRulesCache();
        if (random.below(4) == 0)
            store.applyFilterWithString(random.below(2) == 0 ? "" : "users");
        const auto rows = store.rows();
        const auto remaining = narrowing.narrowed(*rows);
        for (const bool includeSystemRules : {false, true}) {
            std::vector<rules::RuleRef> expected;
            for (std::size_t row = 0; row < rows->count(includeSystemRules); ++row) {
                if (hasProperties(rows->at(row, includeSystemRules), criteria))
                    expected.push_back(rows->at(row, includeSystemRules));
            }
            std::vector<rules::RuleRef> found;
            for (std::size_t row = 0; row < remaining->count(includeSystemRules); ++row)
                found.push_back(remaining->at(row, includeSystemRules));
            ASSERT_EQ(found, expected) << "step " << step;
        }
    }
}

TEST_F(NarrowingTest, OffersTheTagsAndProgramsOfAllRules)
{
    addRules();
    add({.path = "/d", .processName = "/bin/B", .tag = "Three"});
    const NamesInUse names = namesInUse(*store.rows());
    EXPECT_EQ(names.tags, (NamesInUse::List{{"one", "Three", "two"}}));
    EXPECT_EQ(names.programs, (NamesInUse::List{{"/bin/a", "/bin/B", "/bin/c"}}));
    EXPECT_EQ(namesInUse(rules::RuleRows()), NamesInUse());
}

TEST_F(NarrowingTest, OffersTheCommonestNamesOfVeryMany)
{
    for (std::size_t rule = 0; rule < NamesInUse::most + 3; ++rule)
        add({.path = "/a", .processName = "any", .tag = "tag " + std::to_string(rule)});
    add({.path = "/b", .processName = "any", .tag = "tag 999"});
    const NamesInUse::List tags = namesInUse(*store.rows()).tags;
    EXPECT_EQ(tags.names.size(), NamesInUse::most);
    EXPECT_EQ(tags.further, 3U);
    EXPECT_EQ(tags.names.back(), "tag 999");
}

} // namespace quorvane::workflow
