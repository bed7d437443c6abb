#include "rules/RuleLine.h"

#include "rules/LineTokenizer.h"

#include <gtest/gtest.h>

namespace quorvane::rules {

namespace {

LineKind kindOf(const char* line, bool optionsAllowed = false)
{
    LineTokenizer tokenizer;
    return kindOfLine(tokenizer.tokens(line), optionsAllowed);
}

PolicyRuleFields policyOf(const char* line, bool system = false)
{
    LineTokenizer tokenizer;
    TextPool pool;
    return policyRuleFromTokens(tokenizer.tokens(line), system, pool);
}

WatchRuleFields watchOf(const char* line, bool system = false)
{
    LineTokenizer tokenizer;
    TextPool pool;
    return watchRuleFromTokens(tokenizer.tokens(line), system, pool);
}

FilterOption optionOf(const char* line)
{
    LineTokenizer tokenizer;
    return optionFromTokens(tokenizer.tokens(line));
}

} // namespace

TEST(LineKind, DependsOnTheFirstTokenAndTheirNumber)
{
    const struct {
        const char* why;
        const char* line;
        LineKind inUserFile;
        LineKind inMainFile;
    } cases[] = {
        {"no tokens", "", LineKind::unusable, LineKind::unusable},
        {"four tokens", "allow prefix /a any", LineKind::unusable, LineKind::unusable},
        {"five tokens", "allow prefix /a any r", LineKind::policyRule, LineKind::policyRule},
        {"an unknown first word", "permit prefix /a any r", LineKind::policyRule, LineKind::policyRule},
        {"an empty first word", R"("" prefix /a any r)", LineKind::policyRule, LineKind::policyRule},
        {"watch with five", "watch prefix /a any r", LineKind::watchRule, LineKind::watchRule},
        {"watch with four", "watch prefix /a any", LineKind::unusable, LineKind::unusable},
        {"watch in another case", "Watch prefix /a any r", LineKind::policyRule, LineKind::policyRule},
        {"set with two", "set name", LineKind::unusable, LineKind::unusable},
        {"set with three", "set name 1", LineKind::unusable, LineKind::option},
        {"set with five", "set name 1 2 3", LineKind::policyRule, LineKind::option},
        {"set in another case", "SET name 1", LineKind::unusable, LineKind::unusable},
        {"tabs part nothing", "allow\tprefix\t/a\tany\tr", LineKind::unusable, LineKind::unusable},
        {"a blank before a semicolon", "  ; indented", LineKind::unusable, LineKind::unusable},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(kindOf(c.line, false), c.inUserFile) << c.why;
        EXPECT_EQ(kindOf(c.line, true), c.inMainFile) << c.why;
    }
}

TEST(RuleLine, ReadsAllFieldsOfAPolicyRule)
{
    const PolicyRuleFields rule
        = policyOf(R"(deny path "/a b" "/bin/ls" xr "work" "TEAM" "1478000000" rest)");

    EXPECT_EQ(rule.policyClass, 1);
    EXPECT_EQ(rule.policyType, 1);
    EXPECT_EQ(rule.path.view(), "/a b");
    EXPECT_EQ(rule.processName.view(), "/bin/ls");
    EXPECT_EQ(rule.operations, 17U);
    EXPECT_EQ(rule.tag.view(), "work");
    EXPECT_EQ(rule.flags, 0U);
    EXPECT_EQ(rule.constraint.view(), "TEAM");
    EXPECT_EQ(rule.created, 1478000000U);
    EXPECT_FALSE(rule.system);
}

TEST(RuleLine, AbsentFieldsAreEmptyOrZeroNotNull)
{
    const PolicyRuleFields rule = policyOf("deny path /etc/hosts /usr/bin/vi w");

    EXPECT_FALSE(rule.tag.isNull());
    EXPECT_EQ(rule.tag.view(), "");
    EXPECT_FALSE(rule.constraint.isNull());
    EXPECT_EQ(rule.constraint.view(), "");
    EXPECT_EQ(rule.created, 0U);
}

TEST(RuleLine, EmptyFieldsAreEmptyNotNull)
{
    const PolicyRuleFields rule = policyOf(R"(allow prefix "" "" r "" "" "")");

    EXPECT_FALSE(rule.path.isNull());
    EXPECT_FALSE(rule.processName.isNull());
    EXPECT_FALSE(rule.tag.isNull());
    EXPECT_EQ(rule.created, 0U);
}

TEST(RuleLine, SixthFieldIsTheTagForUsersAndFlagsForTheSystem)
{
    const char* policy = "allow prefix /a any r us";
    EXPECT_EQ(policyOf(policy, false).tag.view(), "us");
    EXPECT_EQ(policyOf(policy, false).flags, 0U);
    EXPECT_EQ(policyOf(policy, true).tag.view(), "");
    EXPECT_EQ(policyOf(policy, true).flags, 3U);
    EXPECT_TRUE(policyOf(policy, true).system);

    const char* watch = "watch prefix /a any r us";
    EXPECT_EQ(watchOf(watch, false).tag.view(), "us");
    EXPECT_EQ(watchOf(watch, false).flags, 0U);
    EXPECT_EQ(watchOf(watch, true).tag.view(), "");
    EXPECT_EQ(watchOf(watch, true).flags, 3U);
    EXPECT_TRUE(watchOf(watch, true).system);
}

TEST(RuleLine, ReadsAllFieldsOfAWatchRule)
{
    const WatchRuleFields rule = watchOf(R"(watch suffix ".plist" "/usr/bin/defaults" rw "prefs" ignored)");

    EXPECT_EQ(rule.policyType, 2);
    EXPECT_EQ(rule.path.view(), ".plist");
    EXPECT_EQ(rule.processName.view(), "/usr/bin/defaults");
    EXPECT_EQ(rule.operations, 3U);
    EXPECT_EQ(rule.tag.view(), "prefs");
}

TEST(RuleLine, UnknownWordsReadAsTheUnknownCode)
{
    const PolicyRuleFields rule = policyOf("watched folder /a any zzz");

    EXPECT_EQ(rule.policyClass, 4);
    EXPECT_EQ(rule.policyType, 4);
    EXPECT_EQ(rule.operations, 0U);
}

TEST(RuleLine, CreationTimeIsReadAsASignedNumber)
{
    const struct {
        const char* line;
        std::uint64_t created;
    } cases[] = {
        {"allow prefix /a any r t c abc", 0},
        {"allow prefix /a any r t c 12abc", 12},
        {"allow prefix /a any r t c \" 12\"", 12},
        {"allow prefix /a any r t c -1", UINT64_MAX},
        {"allow prefix /a any r t c -9223372036854775808", 0x8000000000000000U},
        {"allow prefix /a any r t c 9223372036854775807", 0x7FFFFFFFFFFFFFFFU},
        {"allow prefix /a any r t c 18446744073709551615", 0x7FFFFFFFFFFFFFFFU},
    };
    for (const auto& c : cases)
        EXPECT_EQ(policyOf(c.line).created, c.created) << c.line;
}

TEST(RuleLine, OptionValueIsCutTo32Bits)
{
    const struct {
        const char* line;
        std::uint32_t value;
    } cases[] = {
        {"set n 2", 2},
        {"set n 2 3 4", 2},
        {"set n two", 0},
        {"set n -1", 0xFFFFFFFFU},
        {"set n 4294967298", 2},
        {R"(set n "")", 0},
        {R"(set n "  7 days")", 7},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(optionOf(c.line).name.view(), "n") << c.line;
        EXPECT_EQ(optionOf(c.line).value, c.value) << c.line;
    }
}

TEST(RuleLine, WritesAllFieldsOfAPolicyRule)
{
    EXPECT_EQ(ruleLine(PolicyRuleFields{.policyClass = 1,
                  .policyType = 2,
                  .path = "/a b",
                  .processName = "any",
                  .tag = "work",
                  .constraint = "TEAM",
                  .operations = 31,
                  .flags = 3,
                  .created = 1478000000,
                  .sequence = 9,
                  .system = true}),
        "deny suffix \"/a b\" \"any\" rwcmx \"work\" \"TEAM\" \"1478000000\"\n");
}

TEST(RuleLine, WritesAllFieldsOfAWatchRule)
{
    EXPECT_EQ(ruleLine(WatchRuleFields{.policyType = 1,
                  .path = "/a b",
                  .processName = "/bin/ls",
                  .tag = "work",
                  .operations = 5,
                  .flags = 3,
                  .sequence = 9,
                  .system = true}),
        "watch path \"/a b\" \"/bin/ls\" rc \"work\"\n");
}

TEST(RuleLine, WritesNullAsTheWordAndEmptyAsEmpty)
{
    EXPECT_EQ(ruleLine(PolicyRuleFields{.path = {}, .processName = {}, .tag = {}, .constraint = {}}),
        "allow prefix \"(null)\" \"(null)\"  \"(null)\" \"(null)\" \"0\"\n");
    EXPECT_EQ(ruleLine(PolicyRuleFields{.path = "", .processName = "", .operations = 1}),
        "allow prefix \"\" \"\" r \"\" \"\" \"0\"\n");
    EXPECT_EQ(ruleLine(WatchRuleFields{.path = {}, .processName = {}, .tag = {}}),
        "watch prefix \"(null)\" \"(null)\"  \"(null)\"\n");
}

TEST(RuleLine, WritesUnknownCodesAsErrAndCodeTwoAsWatch)
{
    EXPECT_EQ(ruleLine(PolicyRuleFields{
                  .policyClass = 4, .policyType = 4, .path = "/a", .processName = "any", .operations = 1}),
        "err err \"/a\" \"any\" r \"\" \"\" \"0\"\n");
    EXPECT_EQ(ruleLine(PolicyRuleFields{
                  .policyClass = 2, .policyType = -1, .path = "/a", .processName = "any", .operations = 1}),
        "watch err \"/a\" \"any\" r \"\" \"\" \"0\"\n");
}

TEST(RuleLine, OnlyTheTagLosesItsQuotes)
{
    EXPECT_EQ(ruleLine(PolicyRuleFields{.path = "/a\"b",
                  .processName = "p\"q",
                  .tag = "\"t\"u\"",
                  .constraint = "c\"d",
                  .operations = 1}),
        "allow prefix \"/a\"b\" \"p\"q\" r \"tu\" \"c\"d\" \"0\"\n");
    EXPECT_EQ(ruleLine(WatchRuleFields{.path = "/a\"b", .processName = "p", .tag = "\"", .operations = 1}),
        "watch prefix \"/a\"b\" \"p\" r \"\"\n");
}

TEST(RuleLine, CreationTimeWithTheTopBitIsWrittenNegative)
{
    EXPECT_EQ(ruleLine(PolicyRuleFields{
                  .path = "/a", .processName = "any", .operations = 1, .created = UINT64_MAX - 4}),
        "allow prefix \"/a\" \"any\" r \"\" \"\" \"-5\"\n");
}

TEST(WrittenPart, LosesAByteForEachByteThatIsNoUtf16Unit)
{
    const struct {
        const char* why;
        const char* line;
        const char* written;
    } cases[] = {
        {"ASCII stays whole", "allow\n", "allow\n"},
        {"two bytes, one unit: one byte is lost", "\u00E9 abc\n", "\u00E9 abc"},
        {"three bytes, one unit: two are lost", "\u20AC abc\n", "\u20AC ab"},
        {"four bytes, two units: two are lost", "\U0001F600 abc\n", "\U0001F600 ab"},
        {"losses add up", "\u00E9\u20AC abc\n", "\u00E9\u20AC a"},
        {"nothing", "", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(writtenPart(c.line), c.written) << c.why;
}

} // namespace quorvane::rules
