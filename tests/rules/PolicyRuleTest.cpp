#include "rules/PolicyRule.h"

#include "rules/RuleCodes.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace quorvane::rules {

namespace {

constexpr std::uint64_t now = 1700000000;

PolicyRuleFields someFields()
{
    return {.policyClass = 1,
        .policyType = 1,
        .path = "/a/b",
        .processName = "/bin/ls",
        .constraint = "TEAM",
        .operations = 3,
        .flags = 1};
}

std::int32_t stateOf(std::uint64_t created, bool system = false)
{
    return PolicyRule({.path = "/a", .processName = "any", .created = created, .system = system}, now)
        .getRuleState();
}

} // namespace

TEST(PolicyRule, NewOneHasNullPathAndProcessButEmptyTagAndConstraint)
{
    const PolicyRule rule;

    EXPECT_EQ(rule.policyClass(), 0);
    EXPECT_EQ(rule.policyType(), 0);
    EXPECT_TRUE(rule.path().isNull());
    EXPECT_TRUE(rule.processName().isNull());
    EXPECT_FALSE(rule.tag().isNull());
    EXPECT_EQ(rule.tag().view(), "");
    EXPECT_FALSE(rule.constraint().isNull());
    EXPECT_EQ(rule.constraint().view(), "");
    EXPECT_EQ(rule.operations(), 0U);
    EXPECT_EQ(rule.flags(), 0U);
    EXPECT_EQ(rule.created(), 0U);
    EXPECT_EQ(rule.sequence(), 0);
    EXPECT_FALSE(rule.system());
}

TEST(PolicyRule, ShortNameReadsNullAndIsComputedInstead)
{
    const PolicyRule rule({.path = "/a", .processName = "/Applications/Mail.app/Contents/MacOS/Mail"});

    EXPECT_TRUE(rule.processShortName().isNull());
    EXPECT_EQ(rule.getProcessShortName(), "Mail");
}

TEST(PolicyRule, EveryPropertyKeepsWhatItIsGiven)
{
    PolicyRule rule;
    rule.setPolicyClass(-1);
    rule.setPolicyType(4);
    rule.setPath("/p");
    rule.setProcessName("/q");
    rule.setTag(std::nullopt);
    rule.setConstraint("c");
    rule.setOperations(0xFFFFFFFFU);
    rule.setFlags(7);
    rule.setCreated(UINT64_MAX);
    rule.setSequence(-5);
    rule.setSystem(true);

    EXPECT_EQ(rule.policyClass(), -1);
    EXPECT_EQ(rule.policyType(), 4);
    EXPECT_EQ(rule.path().view(), "/p");
    EXPECT_EQ(rule.processName().view(), "/q");
    EXPECT_TRUE(rule.tag().isNull());
    EXPECT_EQ(rule.constraint().view(), "c");
    EXPECT_EQ(rule.operations(), 0xFFFFFFFFU);
    EXPECT_EQ(rule.flags(), 7U);
    EXPECT_EQ(rule.created(), UINT64_MAX);
    EXPECT_EQ(rule.sequence(), -5);
    EXPECT_TRUE(rule.system());
}

TEST(PolicyRule, StringIsCopiedOnAssignment)
{
    std::string path = "/first";
    PolicyRule rule;
    rule.setPath(path);
    path[1] = 'F';

    EXPECT_EQ(rule.path().view(), "/first");
}

TEST(PolicyRule, ValueReadBeforeAChangeOutlivesIt)
{
    PolicyRule rule({.path = "/before", .processName = {}});
    const NullableText before = rule.path();
    rule.setPath("/after");

    EXPECT_EQ(before.view(), "/before");
}

TEST(PolicyRule, AccessorsMayBeUsedWhileAnotherThreadSets)
{
    PolicyRule rule({.path = "/0", .processName = "any"});
    std::thread setter([&rule] {
        for (int number = 1; number <= 2000; ++number) {
            rule.setPath("/" + std::to_string(number));
            rule.setCreated(static_cast<std::uint64_t>(number));
        }
    });
    bool allWhole = true;
    for (int read = 0; read < 2000; ++read)
        allWhole = allWhole && rule.path().view().starts_with("/") && rule.created() <= 2000;
    setter.join();

    EXPECT_TRUE(allWhole);
    EXPECT_EQ(rule.path().view(), "/2000");
}

TEST(PolicyRuleState, IsRecentForLessThanADay)
{
    const struct {
        const char* why;
        std::uint64_t created;
        std::int32_t state;
    } cases[] = {
        {"no creation time is long ago", 0, 0},
        {"this very second", now, 2},
        {"one second less than a day", now - 86399, 2},
        {"exactly a day", now - 86400, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(stateOf(c.created), c.state) << c.why;
}

TEST(PolicyRuleState, OfARuleCreatedInTheFutureIsOld)
{
    EXPECT_EQ(stateOf(now + 1), 0);
    EXPECT_EQ(stateOf(now + 86400), 0);
    EXPECT_EQ(stateOf(UINT64_MAX), 0);
}

TEST(PolicyRuleState, SystemRuleIsNeverRecent)
{
    EXPECT_EQ(stateOf(now, true), 1);
    EXPECT_EQ(stateOf(0, true), 1);
}

TEST(PolicyRuleState, IsMeasuredAgainstTheMomentOfMaking)
{
    const auto before = static_cast<std::uint64_t>(std::time(nullptr));

    EXPECT_EQ(PolicyRule({.path = "/a", .processName = "any", .created = before}).getRuleState(), 2);
    EXPECT_EQ(PolicyRule({.path = "/a", .processName = "any", .created = before - 86400}).getRuleState(), 0);
}

TEST(PolicyRuleEquality, ComparesEverythingButTagTimesSequenceAndSystem)
{
    using Change = std::function<void(PolicyRule&)>;
    const struct {
        const char* why;
        Change change;
        bool equal;
    } cases[] = {
        {"nothing", [](PolicyRule&) {}, true},
        {"tag", [](PolicyRule& r) { r.setTag("t"); }, true},
        {"created", [](PolicyRule& r) { r.setCreated(1); }, true},
        {"sequence", [](PolicyRule& r) { r.setSequence(1); }, true},
        {"system", [](PolicyRule& r) { r.setSystem(true); }, true},
        {"class", [](PolicyRule& r) { r.setPolicyClass(0); }, false},
        {"type", [](PolicyRule& r) { r.setPolicyType(0); }, false},
        {"process", [](PolicyRule& r) { r.setProcessName("/bin/sh"); }, false},
        {"process in its case", [](PolicyRule& r) { r.setProcessName("/bin/LS"); }, false},
        {"operations", [](PolicyRule& r) { r.setOperations(1); }, false},
        {"flags", [](PolicyRule& r) { r.setFlags(0); }, false},
        {"constraint", [](PolicyRule& r) { r.setConstraint(""); }, false},
        {"null constraint", [](PolicyRule& r) { r.setConstraint({}); }, false},
    };
    const PolicyRule rule(someFields());
    for (const auto& c : cases) {
        PolicyRule other(someFields());
        c.change(other);
        EXPECT_EQ(rule.isEqualToPolicyRule(other), c.equal) << c.why;
        EXPECT_EQ(rule.isEqualToPolicyRuleWithPrefix(other), c.equal) << c.why << ", with prefix";
    }
}

TEST(PolicyRuleEquality, WithPrefixTheOtherRulesPathTakesNoPart)
{
    const PolicyRule rule(someFields());
    PolicyRule other(someFields());
    for (const NullableText& path :
        {NullableText("/a/c"), NullableText("/other/place"), NullableText("/A/b"), NullableText()}) {
        other.setPath(path);
        EXPECT_FALSE(rule.isEqualToPolicyRule(other)) << path.written();
        EXPECT_TRUE(rule.isEqualToPolicyRuleWithPrefix(other)) << path.written();
    }
}

TEST(PolicyRuleEquality, NullEqualsNothingNotEvenNull)
{
    const struct {
        const char* why;
        NullableText PolicyRuleFields::*property;
    } cases[] = {
        {"path", &PolicyRuleFields::path},
        {"process", &PolicyRuleFields::processName},
        {"constraint", &PolicyRuleFields::constraint},
    };
    for (const auto& c : cases) {
        PolicyRuleFields fields = someFields();
        fields.*c.property = NullableText();
        const PolicyRule rule(fields);
        const PolicyRule same(fields);
        EXPECT_FALSE(rule.isEqualToPolicyRule(rule)) << c.why;
        EXPECT_FALSE(rule.isEqualToPolicyRule(same)) << c.why;
        EXPECT_FALSE(rule.isEqualToPolicyRuleWithPrefix(same)) << c.why;
        fields.*c.property = "";
        EXPECT_FALSE(rule.isEqualToPolicyRule(PolicyRule(fields))) << c.why << ": empty is not null";
        EXPECT_FALSE(PolicyRule(fields).isEqualToPolicyRule(rule)) << c.why << ": null is not empty";
        EXPECT_TRUE(PolicyRule(fields).isEqualToPolicyRule(PolicyRule(fields))) << c.why;
    }
}

} // namespace quorvane::rules
