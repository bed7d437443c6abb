#include "codesign/SealRules.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::codesign {

namespace {

// Rules that exempt paths matching the pattern and require a seal for everything else.
std::optional<SealRules> leavingOut(const std::string& pattern)
{
    const platform::PropertyValue omit{
        platform::PropertyValue::Dictionary{{"omit", {true}}, {"weight", {std::int64_t{10}}}}};
    return SealRules::parse({{"", {true}}, {pattern, omit}});
}

} // namespace

TEST(SealRules, FindPatternsAsSealsUseThem)
{
    const struct {
        const char* pattern;
        const char* text;
        bool found;
    } cases[] = {
        {"^Resources/", "Resources/a", true},
        {"^Resources/", "a/Resources/b", false},
        {"^.*", "", true},
        {"^.*$", "a\nb", true},
        {".*\\.dSYM($|/)", "a/b.dSYM", true},
        {".*\\.dSYM($|/)", "a/b.dSYM/c", true},
        {".*\\.dSYM($|/)", "a/b.dSYMx", false},
        {"^(.*/)?\\.DS_Store$", ".DS_Store", true},
        {"^(.*/)?\\.DS_Store$", "a/b/.DS_Store", true},
        {"^(.*/)?\\.DS_Store$", "a.DS_Store", false},
        {"^(.*/)?\\.DS_Store$", "a\n.DS_Store", false},
        {"^(Frameworks|SharedFrameworks|Library/(Automator|Spotlight))/", "Library/Spotlight/x", true},
        {"^(Frameworks|SharedFrameworks|Library/(Automator|Spotlight))/", "Library/Other/x", false},
        {"^[^/]+$", "file", true},
        {"^[^/]+$", "a/b", false},
        {"^[^/]$", "\xE9", true},
        {"[a-c]x", "bx", true},
        {"[a-c]x", "dx", false},
        {"[]x]y", "]y", true},
        {"[a-]b", "-b", true},
        {"ab+c?", "ab", true},
        {"^ab+c?$", "a", false},
        {"^(a|b|)c$", "c", true},
        {"^(a*)*$", "aaaa", true},
        {"^a{2}$", "aa", true},
        {"x$", "xy", false},
        {"", "anything", true},
    };
    for (const auto& c : cases) {
        const auto rules = leavingOut(c.pattern);
        ASSERT_TRUE(rules) << c.pattern;
        EXPECT_EQ(rules->mayBeUnsealed(c.text), c.found) << c.pattern << " in " << c.text;
    }
}

TEST(SealRules, AreRefusedWhenAPatternIsMalformedOrTooLarge)
{
    for (const std::string& pattern : {std::string("("), std::string(")"), std::string("a)"),
             std::string("["), std::string("[]"), std::string("*a"), std::string("\\d"),
             std::string("(a)\\1"), std::string("a\\"), std::string(1025, 'a'), std::string(1000, '('),
             std::string("((a{100}){100}){100}"), std::string("(.{1,1000}){1,1000}"),
             std::string("(a{1,1000}|b{1,1000}|c{1,1000}|d{1,1000}|e{1,1000}|f{1,1000})")})
        EXPECT_FALSE(leavingOut(pattern)) << pattern.substr(0, 20);
    EXPECT_TRUE(leavingOut("(a{1,1000}|b{1,1000}|c{1,1000}|d{1,1000})"));
    EXPECT_TRUE(leavingOut(std::string(1024, 'a')));
}

TEST(SealRules, AreRefusedWhenTheyAreMoreThanAnyBundleHas)
{
    platform::PropertyValue::Dictionary rules;
    for (int i = 0; i < 64; ++i)
        rules.push_back({"a" + std::to_string(i), {true}});
    EXPECT_TRUE(SealRules::parse(rules));
    rules.push_back({"b", {true}});
    EXPECT_FALSE(SealRules::parse(rules));
}

TEST(SealRules, TheHeaviestThatMatchesCounts)
{
    const auto rule = [](double weight, bool omit) {
        return platform::PropertyValue{
            platform::PropertyValue::Dictionary{{"weight", {weight}}, {"omit", {omit}}}};
    };
    const auto rules
        = SealRules::parse({{"^a", rule(5, true)}, {"b", rule(20, false)}, {"c", rule(3, true)}});
    ASSERT_TRUE(rules);
    EXPECT_TRUE(rules->mayBeUnsealed("a"));
    EXPECT_FALSE(rules->mayBeUnsealed("ab"));
    EXPECT_FALSE(rules->mayBeUnsealed("bc"));
    EXPECT_TRUE(rules->mayBeUnsealed("d")) << "none matches";
}

TEST(SealRules, WithoutAWeightWeighOne)
{
    const auto omitting = [](double weight) {
        return platform::PropertyValue{
            platform::PropertyValue::Dictionary{{"weight", {weight}}, {"omit", {true}}}};
    };
    const auto isOmitted = [&](double weight) {
        return SealRules::parse({{"a", {true}}, {"b", omitting(weight)}})->mayBeUnsealed("ab");
    };
    EXPECT_FALSE(isOmitted(0.5));
    EXPECT_TRUE(isOmitted(1.5));
    EXPECT_FALSE(isOmitted(1)) << "of two that weigh the same the first counts";
    EXPECT_TRUE(SealRules::parse({{"a", {true}}, {"b", {false}}, {"^b", {true}}})->mayBeUnsealed("b"))
        << "false omits";
}

} // namespace quorvane::codesign
