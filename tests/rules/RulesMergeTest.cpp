#include "rules/RulesMerge.h"

#include "rules/RulesDiff.h"
#include "tests/rules/RuleLists.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

constexpr auto merging = Placement::endOfKind;
constexpr auto undoing = Placement::startOfKind;

test::RuleValues rulesOf(const MergeResult& result)
{
    test::RuleValues rules;
    for (const MergedRule& rule : result.rules)
        rules.push_back(rule.rule);
    return rules;
}

std::string mergedRules(const std::string& base, const std::string& ours, const std::string& theirs,
    Placement placement = merging)
{
    return test::namesOf(rulesOf(
        mergeRules(test::namedRules(base), test::namedRules(ours), test::namedRules(theirs), placement)));
}

std::string reportsOf(const std::string& base, const std::string& ours, const std::string& theirs)
{
    constexpr const char* kinds[] = {"tag set: ", "kept: ", "added: "};
    std::string text;
    for (const MergeReport& report :
        mergeRules(test::namedRules(base), test::namedRules(ours), test::namedRules(theirs)).reports)
        text += kinds[report.kind] + test::nameOf(report.kept) + " not " + test::nameOf(report.other) + "; ";
    return text;
}

// How often each rule occurs, without its tag and time.
std::map<std::string, std::size_t> countsOf(const test::RuleValues& rules)
{
    std::map<std::string, std::size_t> counts;
    for (const RuleValue& rule : rules)
        ++counts[test::nameOf(withMarks(rule, test::namedRule("x"), test::namedRule("x")))];
    return counts;
}

std::vector<std::string> sortedNames(const test::RuleValues& rules)
{
    std::vector<std::string> names;
    for (const RuleValue& rule : rules)
        names.push_back(test::nameOf(rule));
    std::sort(names.begin(), names.end());
    return names;
}

test::RuleValues withoutTimes(test::RuleValues rules)
{
    for (RuleValue& rule : rules)
        rule = withMarks(rule, rule, test::namedRule("x"));
    return rules;
}

// `rules` after some changes of one side.
test::RuleValues edited(test::RandomRules& random, test::RuleValues rules)
{
    for (std::size_t left = random.below(4); left > 0; --left) {
        const std::size_t at = random.below(rules.size() + 1);
        const auto place = rules.begin() + static_cast<std::ptrdiff_t>(at);
        const RuleValue other
            = randomRuleList(random, 9).empty() ? test::namedRule("g:z") : test::namedRule("a:x");
        if (at == rules.size() || random.below(3) == 0)
            rules.insert(
                place, random.oneOf<RuleValue>({other, test::namedRule("h"), test::namedRule("w4")}));
        else if (random.below(2) == 0)
            rules.erase(place);
        else
            *place = withMarks(*place, test::namedRule("a:new"), *place);
    }
    std::stable_partition(rules.begin(), rules.end(),
        [](const RuleValue& rule) { return std::holds_alternative<WatchValue>(rule); });
    return rules;
}

} // namespace

TEST(MergeRules, FollowTheRules)
{
    const struct {
        const char* why;
        std::string base, ours, theirs, result, reports;
    } cases[] = {
        {"nothing changed", "a b", "a b", "a b", "a b", ""},
        {"each added one", "a", "a b", "a c", "a c b", ""},
        {"each removed one", "a b c", "b c", "a c", "c", ""},
        {"both removed one", "a b", "a", "a", "a", ""},
        {"both added one", "a", "a b", "a b", "a b", ""},
        {"both added one with different tags", "a", "a b:x", "b:y a", "a b:x", "added: b:x not b:y; "},
        {"both added one at different times", "", "a@1", "a@2", "a@1", ""},
        {"their tag", "a:x b", "a:x b", "a:y b", "a:y b", ""},
        {"our tag", "a:x b", "a:y b", "a:x b", "a:y b", ""},
        {"the same tag", "a:x", "a:y", "a:y", "a:y", ""},
        {"two tags", "a:x", "a:y", "a:z", "a:y", "tag set: a:y not a:z; "},
        {"their time", "a@1", "a@1", "a@2", "a@2", ""},
        {"two times", "a@1", "a@2", "a@3", "a@2", ""},
        {"our tag and their time", "a:x@1", "a:y@1", "a:x@2", "a:y@2", ""},
        {"our time and their tag", "a:x@1", "a:x@2", "a:y@1", "a:y@2", ""},
        {"two tags and their time", "a:x@1", "a:y@1", "a:z@2", "a:y@2", "tag set: a:y@2 not a:z@2; "},
        {"removed by us, tagged by them", "b a:x", "b", "b a:y", "b a:y", "kept: a:y not a:x; "},
        {"tagged by us, removed by them", "a:x b", "a:y b", "b", "a:y b", "kept: a:y not a:x; "},
        {"removed by us, another time by them", "a@1 b", "b", "a@2 b", "b", ""},
        {"a watch rule's tag", "w1:x", "w1:x", "w1:y", "w1:y", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(mergedRules(c.base, c.ours, c.theirs), c.result) << c.why;
        EXPECT_EQ(reportsOf(c.base, c.ours, c.theirs), c.reports) << c.why;
    }
}

TEST(MergeRules, PutWhatTheirsAddsBehindWhatPrecedesItThere)
{
    const struct {
        const char* why;
        std::string base, ours, theirs, result;
    } cases[] = {
        {"immediately, in front of what ours added there", "a b", "a x b", "a y b", "a y x b"},
        {"several in their order", "a b", "a b", "a y z b", "a y z b"},
        {"walking back over what ours removed", "a b c", "a c", "a b y c", "a y c"},
        {"walking back over what theirs added", "a", "a", "a y z", "a y z"},
        {"in the order of ours", "a b c", "c b a", "a y b z c", "c b z a y"},
        {"behind a rule kept for its tag", "b a c", "b c", "b a:t y c", "b a:t y c"},
        {"first policy rule behind the last watch rule", "w1 a", "w1 a", "w1 y a", "w1 y a"},
        {"behind a watch rule that ours does not end with", "w1 a", "w1 w2 a", "w1 y a", "w1 y w2 a"},
        {"else at the end of the policy rules", "w1 a b", "w1 a b", "y w1 a b", "w1 a b y"},
        {"else at the end of the watch rules", "w1 a", "w1 a", "w2 w1 a", "w1 w2 a"},
        {"what follows stays behind it", "w1 a", "w1 a", "w2 w3 w1 a", "w1 w2 w3 a"},
        {"first watch rule in front", "a b", "a b", "w1 a b", "w1 a b"},
        {"first policy rule behind all", "w1", "w1", "y w1", "w1 y"},
        {"into nothing", "", "", "w1 y", "w1 y"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mergedRules(c.base, c.ours, c.theirs), c.result) << c.why;
}

TEST(MergeRules, CountEqualRulesOneByOne)
{
    const struct {
        const char* why;
        std::string base, ours, theirs, result;
    } cases[] = {
        {"removals are taken from the last", "a b a", "a b a", "b a", "a b"},
        {"both removed one of three", "a a a b", "a a b", "a a b", "a a b"},
        {"we removed one of three, they two", "a a a b", "a a b", "a b", "a b"},
        {"additions count once, the larger number", "a", "a a", "a a a", "a a a"},
        {"we removed one, they added one", "a a", "a", "a a a", "a a"},
        {"tags go first to first", "a:x a:y", "a:x a:y", "a:z a:y", "a:z a:y"},
        {"and second to second", "a:x a:y", "a:x a:y", "a:x a:z", "a:x a:z"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mergedRules(c.base, c.ours, c.theirs), c.result) << c.why;
}

TEST(MergeRules, NameTheRuleOfOursThatEachIs)
{
    const test::RuleValues ours = test::namedRules("a b:x c");
    const MergeResult result = mergeRules(test::namedRules("a b c"), ours, test::namedRules("d a@9 c"));

    ASSERT_EQ(test::namesOf(rulesOf(result)), "a@9 b:x c d");
    EXPECT_EQ(result.rules[0].ours, 0U);
    EXPECT_EQ(result.rules[1].ours, 1U);
    EXPECT_EQ(result.rules[1].rule, ours[1]); // the same value object if nothing changes
    EXPECT_EQ(result.rules[2].rule, ours[2]);
    EXPECT_EQ(result.rules[3].ours, std::nullopt);
}

TEST(MergeRules, UndoKeepsWhatOthersDidMeanwhile)
{
    const struct {
        const char* why;
        std::string before, after, present, result;
    } cases[] = {
        {"a delete", "w1 a b c", "w1 a c", "w1 a c", "w1 a b c"},
        {"a delete, and an addition since", "w1 a b c", "w1 a c", "w1 a x c y", "w1 a b x c y"},
        {"a delete of the first", "a b", "b", "b x", "a b x"},
        {"a delete of the first, and a watch rule since", "a b", "b", "w1 b", "w1 a b"},
        {"a delete of all", "w1 a", "", "", "w1 a"},
        {"a delete, and the same rule added since", "a b", "a", "a b:t", "a b:t"},
        {"an addition", "a", "a b", "a b x", "a x"},
        {"an addition that has been removed since", "a", "a b", "a", "a"},
        {"an addition that has got a tag since", "a", "a b", "a b:t", "a b:t"},
        {"a tag", "a:x b", "a:y b", "a:y b c", "a:x b c"},
        {"a tag that has changed since", "a:x", "a:y", "a:z", "a:z"},
        {"an edit, which moves to the end", "a b c", "a c e", "a c e x", "a b c x"},
        {"an edit of the tag alone, which moves too", "a b:x c", "a c b:y", "a c b:y z", "a b:x c z"},
        {"the first of two equal rules", "a b a", "b a", "b a", "a b a"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mergedRules(c.after, c.present, c.before, undoing), c.result) << c.why;
}

TEST(MergeRules, SayWhichRulesAnUndoMoves)
{
    const MergeResult result = mergeRules(
        test::namedRules("a c b"), test::namedRules("a c b"), test::namedRules("a b c"), undoing);

    ASSERT_EQ(test::namesOf(rulesOf(result)), "a b c");
    EXPECT_EQ(std::count_if(
                  result.rules.begin(), result.rules.end(), [](const auto& rule) { return rule.isMoved; }),
        1);
    for (const MergedRule& rule : result.rules)
        EXPECT_TRUE(rule.ours);
    EXPECT_EQ(mergedRules("a c b", "a c b", "a b c", merging), "a c b");
}

TEST(MergeRules, OfOneSideAloneIsThatSide)
{
    test::RandomRules random(71);
    for (int round = 0; round < 1500; ++round) {
        const test::RuleValues base = randomRuleList(random, 9);
        const test::RuleValues other
            = random.below(2) == 0 ? edited(random, base) : randomRuleList(random, 9);
        for (const Placement placement : {merging, undoing}) {
            const MergeResult ours = mergeRules(base, other, base, placement);
            ASSERT_EQ(test::namesOf(rulesOf(ours)), test::namesOf(other)) << test::namesOf(base);
            ASSERT_TRUE(ours.reports.empty());
            const MergeResult both = mergeRules(base, other, other, placement);
            ASSERT_EQ(test::namesOf(rulesOf(both)), test::namesOf(other)) << test::namesOf(base);
            ASSERT_TRUE(both.reports.empty());
            const MergeResult theirs = mergeRules(base, base, other, placement);
            ASSERT_EQ(sortedNames(rulesOf(theirs)), sortedNames(other)) << test::namesOf(base);
            ASSERT_TRUE(theirs.reports.empty());
        }
    }
}

TEST(MergeRules, RestoreOnUndoWhatWasThereBefore)
{
    test::RandomRules random(72);
    for (int round = 0; round < 1500; ++round) {
        const test::RuleValues before = randomRuleList(random, 9);
        const test::RuleValues after
            = random.below(2) == 0 ? edited(random, before) : randomRuleList(random, 9);
        ASSERT_EQ(test::namesOf(rulesOf(mergeRules(after, after, before, undoing))), test::namesOf(before))
            << "after " << test::namesOf(after);
    }
}

TEST(MergeRules, KeepOnUndoEveryChangeOfOthers)
{
    const auto isOfOthers = [](const RuleValue& rule) {
        const char name = test::nameOf(rule)[0];
        return name == 'h' || name == 'w';
    };
    const auto only = [&](bool ofOthers, test::RuleValues rules) {
        std::erase_if(rules, [&](const RuleValue& rule) { return isOfOthers(rule) != ofOthers; });
        return test::namesOf(rules);
    };
    // `rules` after removals, new tags and additions of one side.
    const auto changed = [&](test::RandomRules& random, bool byOthers, const test::RuleValues& rules) {
        test::RuleValues result;
        for (const RuleValue& rule : rules) {
            const std::size_t choice = isOfOthers(rule) == byOthers ? random.below(4) : 3;
            if (choice == 1)
                result.push_back(withMarks(rule, test::namedRule("a:new"), rule));
            else if (choice > 1)
                result.push_back(rule);
            if (random.below(4) == 0)
                result.push_back(test::namedRule((byOthers ? "h" : "i") + std::to_string(result.size())));
        }
        return result;
    };
    test::RandomRules random(73);
    for (int round = 0; round < 1500; ++round) {
        test::RuleValues before = rulesDifference({}, randomRuleList(random, 12)).added; // each rule once
        before.push_back(test::namedRule("h"));
        const test::RuleValues after = changed(random, false, before);
        const test::RuleValues present = changed(random, true, after);
        const test::RuleValues result = rulesOf(mergeRules(after, present, before, undoing));
        ASSERT_EQ(only(true, result), only(true, present))
            << test::namesOf(before) << " | " << test::namesOf(after);
        ASSERT_EQ(only(false, result), only(false, before))
            << test::namesOf(after) << " | " << test::namesOf(present);
    }
}

TEST(MergeRules, CommuteButForOrderAndTies)
{
    test::RandomRules random(74);
    for (int round = 0; round < 1500; ++round) {
        const test::RuleValues base = randomRuleList(random, 9);
        const test::RuleValues a = edited(random, base);
        const test::RuleValues b = edited(random, base);
        const MergeResult here = mergeRules(base, a, b);
        const MergeResult there = mergeRules(base, b, a);
        ASSERT_EQ(countsOf(rulesOf(here)), countsOf(rulesOf(there)))
            << test::namesOf(base) << " | " << test::namesOf(a) << " | " << test::namesOf(b);
        ASSERT_EQ(here.reports.size(), there.reports.size());
        if (here.reports.empty()) {
            ASSERT_EQ(sortedNames(withoutTimes(rulesOf(here))), sortedNames(withoutTimes(rulesOf(there))));
        }
    }
}

} // namespace quorvane::rules
