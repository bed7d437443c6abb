#include "workflow/RulesApplication.h"

#include "rules/RuleIdentity.h"
#include "tests/rules/RuleLists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace quorvane::workflow {

namespace {

std::vector<rules::RuleRef> records(const test::RuleValues& rules)
{
    std::vector<rules::RuleRef> refs;
    for (const rules::RuleValue& rule : rules)
        refs.push_back(recordOf(rule));
    return refs;
}

std::vector<WantedRule> wantedRules(const test::RuleValues& rules)
{
    std::vector<WantedRule> wanted;
    for (const rules::RuleValue& rule : rules) {
        const bool isThere = std::any_of(wanted.begin(), wanted.end(),
            [&](const WantedRule& other) { return isEqualRule(other.rule, rule); });
        if (!isThere)
            wanted.push_back({rule});
    }
    return wanted;
}

// The rules after the change, without regard to order.
test::RuleValues applied(const std::vector<rules::RuleRef>& present, const rules::ChangeSet& change)
{
    test::RuleValues rules;
    for (const rules::RuleRef& rule : present) {
        const auto isOf = [&](const auto& each) { return addressOf(each.rule) == addressOf(rule); };
        const auto changed = std::find_if(change.changed.begin(), change.changed.end(), isOf);
        if (std::none_of(change.removed.begin(), change.removed.end(), isOf))
            rules.push_back(changed == change.changed.end() ? valueOf(rule) : changed->after);
    }
    for (const rules::ChangeSet::Addition& addition : change.added)
        rules.push_back(addition.value);
    return rules;
}

std::string presence(
    const std::string& wanted, const std::string& present, const std::vector<std::string>& tags)
{
    const std::vector<rules::RuleRef> refs = records(test::namedRules(present));
    return test::namesOf(applied(refs, presenceOf(wantedRules(test::namedRules(wanted)), refs, tags).change));
}

} // namespace

TEST(RulesApplication, AddsWhatIsMissingAndBringsTagAndTimeToWhatIsWanted)
{
    EXPECT_EQ(presence("a:t@5 b w1:u", "a:x@1 c w1", {}), "a:t@5 c w1:u b");
    EXPECT_EQ(presence("", "a", {}), "a");
}

TEST(RulesApplication, KeepsTagAndTimeThatAreNotGiven)
{
    const std::vector<rules::RuleRef> present = records(test::namedRules("a:x@1"));
    const rules::RuleValue rule = test::namedRule("a:t@5");
    EXPECT_EQ(
        test::namesOf(applied(present, presenceOf({{rule, false, true}}, present, {}).change)), "a:x@5");
    EXPECT_EQ(
        test::namesOf(applied(present, presenceOf({{rule, true, false}}, present, {}).change)), "a:t@1");
    EXPECT_EQ(presenceOf({{rule, false, false}}, present, {}).unchanged, 1U);
}

TEST(RulesApplication, PrunesOtherRulesOfTheTagsAlone)
{
    EXPECT_EQ(presence("a:t", "a:t b:t c:u d:v e", {"t", "v"}), "a:t c:u e");
    EXPECT_EQ(presence("a:t", "a:u", {"u"}), "a:t"); // a wanted rule is never pruned
}

TEST(RulesApplication, RemovesEveryRuleThatIsNotWanted)
{
    const std::vector<rules::RuleRef> present = records(test::namedRules("a:x b a:y c"));
    const RulesApplication absence = absenceOf(wantedRules(test::namedRules("a c:t d")), present);
    EXPECT_EQ(test::namesOf(applied(present, absence.change)), "b");
    EXPECT_EQ(absence.unchanged, 1U);
}

TEST(RulesApplication, ChangesNothingWhenItIsDoneAgain)
{
    test::RandomRules random(21);
    for (int round = 0; round < 500; ++round) {
        const std::vector<rules::RuleRef> present = records(randomRuleList(random, 8));
        const std::vector<WantedRule> wanted = wantedRules(randomRuleList(random, 6));
        const std::vector<std::string> tags = random.oneOf<std::vector<std::string>>({{}, {"x"}, {"x", "y"}});
        const test::RuleValues after = applied(present, presenceOf(wanted, present, tags).change);
        const RulesApplication again = presenceOf(wanted, records(after), tags);
        ASSERT_TRUE(again.change.isEmpty() && again.difference.isEmpty());
        ASSERT_EQ(again.unchanged, wanted.size());
        for (const WantedRule& rule : wanted) {
            ASSERT_TRUE(std::any_of(after.begin(), after.end(), [&](const rules::RuleValue& other) {
                return isEqualRule(other, rule.rule) && hasSameMarks(other, rule.rule);
            }));
        }
        const std::vector<rules::RuleRef> now = records(after);
        for (const rules::RuleValue& rule : applied(now, absenceOf(wanted, now).change)) {
            ASSERT_TRUE(std::none_of(wanted.begin(), wanted.end(),
                [&](const WantedRule& other) { return isEqualRule(other.rule, rule); }));
        }
    }
}

} // namespace quorvane::workflow
