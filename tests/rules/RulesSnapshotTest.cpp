#include "rules/RulesSnapshot.h"

#include "rules/RuleIdentity.h"
#include "rules/RuleMarks.h"
#include "rules/RulesContent.h"
#include "rules/RulesText.h"
#include "tests/rules/RandomRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Rules = std::vector<RuleValue>;

RuleValue ruleOf(const std::string& path)
{
    return makeRuleValue(
        PolicyRuleFields{.path = path, .processName = "/bin/sh", .operations = 1, .created = 1478711254});
}

std::string numbered(std::size_t number)
{
    return "/" + std::to_string(number);
}

// What the lines read as that are written for these rules.
Rules readBack(const RulesSnapshot& meant)
{
    RulesContent content(LineEnds::cut);
    meant.forEach([&content](const RuleValue& rule) {
        askValue(rule, [&content](const auto& fields) { content.append(fields); });
    });
    return rulesOfText(content.bytes());
}

// How many values the snapshot of what is read does not share with that of what was meant.
std::size_t heldAnew(const RulesSnapshot& snapshot, const RulesSnapshot& meant)
{
    const Rules shared = meant.values();
    std::size_t count = 0;
    snapshot.forEach([&](const RuleValue& rule) {
        count += std::find(shared.begin(), shared.end(), rule) == shared.end() ? 1U : 0U;
    });
    return count;
}

void expectSameRules(const RulesSnapshot& snapshot, const Rules& rules)
{
    const Rules found = snapshot.values();
    ASSERT_EQ(found.size(), rules.size());
    for (std::size_t at = 0; at < rules.size(); ++at)
        EXPECT_TRUE(isEqualRule(found[at], rules[at]) && hasSameMarks(found[at], rules[at])) << at;
}

} // namespace

TEST(SnapshotOfWhatIsRead, SharesWhatReadsAsItWasMeant)
{
    const RulesSnapshot meant(
        Rules{ruleOf("/a"), ruleOf("/\u00e4\u00e4\u00e4\u00e4"), ruleOf("/b"), ruleOf("/c")});
    const Rules read = readBack(meant);
    ASSERT_EQ(read.size(), 3U) << "the cut line has lost the end of its time, and joined the next one";
    const RulesSnapshot snapshot = RulesSnapshot::ofRead(read, meant);
    expectSameRules(snapshot, read);
    EXPECT_EQ(heldAnew(snapshot, meant), 1U);
}

TEST(SnapshotOfWhatIsRead, HasTheRulesThatAreRead)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        test::RandomRules random(seed);
        Rules rules;
        for (std::size_t count = random.below(30); count > 0; --count) {
            PolicyRuleFields fields = random.policy();
            if (random.below(4) == 0)
                fields.path = "/\u00e4" + std::to_string(random.below(9));
            rules.push_back(makeRuleValue(fields));
        }
        const RulesSnapshot meant(rules);
        const Rules read = readBack(meant);
        const RulesSnapshot snapshot = RulesSnapshot::ofRead(read, meant);
        expectSameRules(snapshot, read);
        // what was meant may itself have been read
        expectSameRules(RulesSnapshot::ofRead(readBack(snapshot), snapshot), readBack(snapshot));
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
    }
}

TEST(SnapshotOfWhatIsRead, FindsItsWayBehindManyLinesThatWereJoined)
{
    constexpr std::size_t count = 1000;
    Rules rules;
    for (std::size_t number = 0; number < count; ++number)
        rules.push_back(ruleOf((number % 5 == 0 ? "/\u00e4\u00e4\u00e4\u00e4" : "") + numbered(number)));
    const RulesSnapshot meant(rules);
    const Rules read = readBack(meant);
    ASSERT_EQ(read.size(), count / 5 * 4);
    const RulesSnapshot snapshot = RulesSnapshot::ofRead(read, meant);
    expectSameRules(snapshot, read);
    EXPECT_EQ(heldAnew(snapshot, meant), count / 5);
}

TEST(SnapshotOfWhatIsRead, OfNothingIsEmpty)
{
    EXPECT_EQ(RulesSnapshot::ofRead({}, {}).size(), 0U);
    EXPECT_EQ(RulesSnapshot::ofRead({}, RulesSnapshot(Rules{ruleOf("/a")})).size(), 0U);
    expectSameRules(RulesSnapshot::ofRead({ruleOf("/a")}, {}), {ruleOf("/a")});
}

} // namespace quorvane::rules
