#include "workflow/RuleOverlaps.h"

#include "rules/RuleCodes.h"
#include "tests/support/FakeProgramFacts.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace quorvane::workflow {

namespace {

rules::PolicyRuleFields allow(std::int32_t type, const rules::NullableText& path,
    const rules::NullableText& process = "/bin/a", std::uint32_t operations = 1,
    const rules::NullableText& constraint = "")
{
    return {.policyClass = rules::PolicyClass::allow,
        .policyType = type,
        .path = path,
        .processName = process,
        .constraint = constraint,
        .operations = operations};
}

rules::PolicyRuleFields denying(rules::PolicyRuleFields rule)
{
    rule.policyClass = rules::PolicyClass::deny;
    return rule;
}

bool overlapBothWays(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b)
{
    EXPECT_EQ(rulesOverlap(a, denying(b)), rulesOverlap(denying(b), a));
    return rulesOverlap(a, denying(b));
}

constexpr std::int32_t prefix = rules::PolicyType::prefix;
constexpr std::int32_t path = rules::PolicyType::path;
constexpr std::int32_t suffix = rules::PolicyType::suffix;

} // namespace

TEST(RuleOverlaps, NeedAnAllowingAndADenyingRuleAndAnOperationInCommon)
{
    const rules::PolicyRuleFields rule = allow(path, "/x");
    EXPECT_TRUE(rulesOverlap(rule, denying(rule)));
    EXPECT_FALSE(rulesOverlap(rule, rule));
    EXPECT_FALSE(rulesOverlap(denying(rule), denying(rule)));
    rules::PolicyRuleFields unknown = rule;
    unknown.policyClass = rules::unknownCode;
    EXPECT_FALSE(rulesOverlap(rule, unknown));
    EXPECT_TRUE(overlapBothWays(allow(path, "/x", "any", 3), allow(path, "/x", "any", 6)));
    EXPECT_FALSE(overlapBothWays(allow(path, "/x", "any", 1), allow(path, "/x", "any", 6)));
}

TEST(RuleOverlaps, NeedPathsOfWhichOneCoversTheOther)
{
    const struct {
        const char* why;
        rules::PolicyRuleFields a;
        rules::PolicyRuleFields b;
        bool overlap;
    } cases[] = {
        {"a prefix covers a path", allow(prefix, "/a/"), allow(path, "/a/b"), true},
        {"a prefix covers a prefix", allow(prefix, "/a/"), allow(prefix, "/a/b/"), true},
        {"equal paths", allow(path, "/a"), allow(path, "/a"), true},
        {"a path covers nothing below it", allow(path, "/a"), allow(path, "/a/b"), false},
        {"a prefix is no path below", allow(prefix, "/a/b"), allow(path, "/a"), false},
        {"capitals differ", allow(prefix, "/A/"), allow(path, "/a/b"), false},
        {"a suffix covers a path", allow(suffix, ".txt"), allow(path, "/a.txt"), true},
        {"a suffix covers a suffix", allow(suffix, ".txt"), allow(suffix, "a.txt"), true},
        {"other ends", allow(suffix, ".txt"), allow(suffix, ".doc"), false},
        {"a suffix meets a prefix always", allow(suffix, ".txt"), allow(prefix, "/a/"), true},
        {"any is every path, whatever its type", allow(path, "any"), allow(suffix, ".x"), true},
        {"an empty path is, too", allow(path, ""), allow(path, "/x"), true},
        {"two of an unknown type", allow(rules::unknownCode, "/x"), allow(rules::unknownCode, "/x"), false},
        {"an unknown type's text is covered", allow(rules::unknownCode, "/x"), allow(path, "/x"), true},
        {"a missing path", allow(path, {}), allow(path, ""), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(overlapBothWays(c.a, c.b), c.overlap) << c.why;
}

TEST(RuleOverlaps, NeedProgramsThatCanBeTheSame)
{
    const struct {
        const char* why;
        const char* a;
        const char* b;
        bool overlap;
    } cases[] = {
        {"equal", "/bin/a", "/bin/a", true},
        {"other heads", "/bin/a", "/bin/b", false},
        {"any program", "any", "/bin/a", true},
        {"cut at the arguments", "/bin/a (-x)", "/bin/a (-y)", true},
        {"an absent parent", "/bin/a", "/bin/a via /bin/p", true},
        {"any parent", "/bin/a via any", "/bin/a via /bin/p", true},
        {"other parents", "/bin/a via /bin/q", "/bin/a via /bin/p", false},
        {"an ancestor is nobody's in particular", "any ancestor /bin/z", "/bin/a via /bin/p", true},
        {"two ancestors", "any ancestor /bin/z", "any ancestor /bin/y", true},
        {"a parent by name", "any via login", "any via cron", false},
        {"the same by name", "any via login", "any via login", true},
        {"by name, and no parent", "any via login", "/bin/a", true},
        {"any program of one parent", "any via /bin/p", "/bin/a via /bin/p", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(overlapBothWays(allow(path, "/x", c.a), allow(path, "/x", c.b)), c.overlap) << c.why;
}

TEST(RuleOverlaps, NeedConstraintsThatCanBothHold)
{
    const std::string other1(40, 'f');
    const struct {
        const char* why;
        std::string a;
        std::string b;
        bool overlap;
    } cases[] = {
        {"none holds with all", "", "TEAM", true},
        {"one team", "TEAM", "TEAM", true},
        {"two teams", "TEAM", "OTHER", false},
        {"two digests of one length", test::sha1OfNothing, other1, false},
        {"two digests of two lengths", test::sha1OfNothing, test::sha256OfNothing, true},
        {"a digest and a team", test::sha1OfNothing, "TEAM", true},
        {"the platform's mark is no team", "APPLE_PF_BINARY", "TEAM", true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(overlapBothWays(allow(path, "/x", "/bin/a", 1, c.a), allow(path, "/x", "/bin/a", 1, c.b)),
            c.overlap)
            << c.why;
    }
}

TEST(RuleOverlaps, AreThoseOfAWalkOfAllPairs)
{
    std::mt19937 random(11);
    const auto oneOf = [&random](const auto& values) { return values[random() % std::size(values)]; };
    const char* const paths[]
        = {"/", "/a", "/a/", "/a/b", "/a/b.txt", ".txt", "b.txt", "any", "", "t", "/ab"};
    const char* const processes[] = {"/bin/a", "/bin/a (-x)", "/bin/b", "any", "/bin/a via /p",
        "/bin/a via any", "any via /p", "any ancestor /z", "any via name"};
    const std::string other1(40, 'f');
    const std::string constraints[] = {
        "", "", "", "TEAM", "OTHER", "APPLE_PF_BINARY", test::sha1OfNothing, other1, test::sha256OfNothing};
    std::size_t found = 0;
    for (int round = 0; round < 300; ++round) {
        // given random rules from few values
        std::vector<rules::PolicyRuleFields> rules(1 + random() % 30);
        std::vector<const rules::PolicyRuleFields*> asked;
        for (rules::PolicyRuleFields& rule : rules) {
            rule = {.policyClass = oneOf(std::vector{0, 0, 1, 1, 4}),
                .policyType = oneOf(std::vector{0, 1, 2, 2, 4}),
                .path = oneOf(paths),
                .processName = oneOf(processes),
                .constraint = oneOf(constraints),
                .operations = static_cast<std::uint32_t>(random() % 32)};
            if (random() % 20 == 0)
                rule.path = {};
            asked.push_back(random() % 10 == 0 ? nullptr : &rule);
        }
        // when overlaps are looked up
        const auto firsts = firstOverlaps(asked);
        // then they are the first of those found by a scan
        ASSERT_EQ(firsts.size(), asked.size());
        for (std::size_t place = 0; place < asked.size(); ++place) {
            std::size_t first = noOverlap;
            for (std::size_t earlier = 0; asked[place] && earlier < place && first == noOverlap; ++earlier) {
                if (asked[earlier] && rulesOverlap(*asked[earlier], *asked[place]))
                    first = earlier;
            }
            EXPECT_EQ(firsts[place], first) << "round " << round << ", rule " << place;
            found += first == noOverlap ? 0U : 1U;
        }
    }
    EXPECT_GT(found, 500U);
}

} // namespace quorvane::workflow
