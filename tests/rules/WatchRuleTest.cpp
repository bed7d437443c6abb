#include "rules/WatchRule.h"

#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <thread>

namespace quorvane::rules {

namespace {

WatchRuleFields someWatchFields()
{
    return {.policyType = 1, .path = "/a/b", .processName = "/bin/ls", .operations = 3, .flags = 2};
}

} // namespace

TEST(WatchRule, NewOneHasNullPathAndProcessButEmptyTag)
{
    const WatchRule rule;

    EXPECT_EQ(rule.policyType(), 0);
    EXPECT_TRUE(rule.path().isNull());
    EXPECT_TRUE(rule.processName().isNull());
    EXPECT_FALSE(rule.tag().isNull());
    EXPECT_EQ(rule.tag().view(), "");
    EXPECT_EQ(rule.operations(), 0U);
    EXPECT_EQ(rule.flags(), 0U);
    EXPECT_EQ(rule.sequence(), 0);
    EXPECT_FALSE(rule.system());
}

TEST(WatchRule, ClassReadsZeroButIsWatchWhenAskedFor)
{
    const WatchRule rule;

    EXPECT_EQ(rule.policyClass(), 0);
    EXPECT_EQ(rule.getPolicyClass(), 2);
}

TEST(WatchRule, ShortNameIsNullAsPropertyAndEmptyWhenAskedFor)
{
    const WatchRule rule(someWatchFields());

    EXPECT_TRUE(rule.processShortName().isNull());
    EXPECT_EQ(rule.getProcessShortName(), "");
}

TEST(WatchRule, StateIsSystemOrUserOnly)
{
    WatchRule rule(someWatchFields());
    EXPECT_EQ(rule.getRuleState(), 0);
    rule.setSystem(true);
    EXPECT_EQ(rule.getRuleState(), 1);
}

TEST(WatchRule, EveryPropertyKeepsWhatItIsGiven)
{
    WatchRule rule;
    rule.setPolicyType(2);
    rule.setPath("/p");
    rule.setProcessName("");
    rule.setTag("t");
    rule.setOperations(31);
    rule.setFlags(3);
    rule.setSequence(9);
    rule.setSystem(true);

    EXPECT_EQ(rule.policyType(), 2);
    EXPECT_EQ(rule.path().view(), "/p");
    EXPECT_FALSE(rule.processName().isNull());
    EXPECT_EQ(rule.tag().view(), "t");
    EXPECT_EQ(rule.operations(), 31U);
    EXPECT_EQ(rule.flags(), 3U);
    EXPECT_EQ(rule.sequence(), 9);
    EXPECT_TRUE(rule.system());
}

TEST(WatchRule, AccessorsMayBeUsedWhileAnotherThreadSets)
{
    WatchRule rule({.path = "/0", .processName = "/0", .tag = "/0"});
    std::thread setter([&rule] {
        for (int number = 1; number <= 2000; ++number) {
            const std::string text = "/" + std::to_string(number);
            rule.setPath(text);
            rule.setProcessName(text);
            rule.setTag(text);
            rule.setPolicyType(number % 3);
            rule.setOperations(static_cast<std::uint32_t>(number % 32));
            rule.setFlags(static_cast<std::uint32_t>(number % 4));
            rule.setSequence(number);
            rule.setSystem(number % 2 == 0);
        }
    });
    bool allWhole = true;
    for (int read = 0; read < 2000; ++read) {
        for (const NullableText& text : {rule.path(), rule.processName(), rule.tag()})
            allWhole = allWhole && text.view().starts_with("/");
        allWhole = allWhole && rule.policyType() < 3 && rule.operations() < 32 && rule.flags() < 4;
        allWhole = allWhole && rule.sequence() <= 2000 && (!rule.system() || rule.sequence() > 0);
    }
    setter.join();

    EXPECT_TRUE(allWhole);
    EXPECT_EQ(rule.tag().view(), "/2000");
    EXPECT_TRUE(rule.system());
}

TEST(WatchRuleEquality, ComparesEverythingButTagSequenceAndSystem)
{
    const struct {
        const char* why;
        std::function<void(WatchRule&)> change;
        bool equal;
    } cases[] = {
        {"nothing", [](WatchRule&) {}, true},
        {"tag", [](WatchRule& r) { r.setTag("t"); }, true},
        {"sequence", [](WatchRule& r) { r.setSequence(1); }, true},
        {"system", [](WatchRule& r) { r.setSystem(true); }, true},
        {"type", [](WatchRule& r) { r.setPolicyType(0); }, false},
        {"path", [](WatchRule& r) { r.setPath("/a/c"); }, false},
        {"path in its case", [](WatchRule& r) { r.setPath("/A/b"); }, false},
        {"null path", [](WatchRule& r) { r.setPath({}); }, false},
        {"process", [](WatchRule& r) { r.setProcessName("any"); }, false},
        {"operations", [](WatchRule& r) { r.setOperations(1); }, false},
        {"flags", [](WatchRule& r) { r.setFlags(0); }, false},
    };
    const WatchRule rule(someWatchFields());
    for (const auto& c : cases) {
        WatchRule other(someWatchFields());
        c.change(other);
        EXPECT_EQ(rule.isEqualToWatchRule(other), c.equal) << c.why;
    }
}

TEST(WatchRuleEquality, NullEqualsNothingNotEvenNull)
{
    for (NullableText WatchRuleFields::*property : {&WatchRuleFields::path, &WatchRuleFields::processName}) {
        WatchRuleFields fields = someWatchFields();
        fields.*property = NullableText();
        const WatchRule rule(fields);
        EXPECT_FALSE(rule.isEqualToWatchRule(rule));
        fields.*property = "";
        EXPECT_FALSE(rule.isEqualToWatchRule(WatchRule(fields)));
        EXPECT_FALSE(WatchRule(fields).isEqualToWatchRule(rule));
        EXPECT_TRUE(WatchRule(fields).isEqualToWatchRule(WatchRule(fields)));
    }
}

} // namespace quorvane::rules
