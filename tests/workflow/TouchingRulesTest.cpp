#include "workflow/TouchingRules.h"
#include "tests/rules/RandomRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

bool touchesPath(std::int32_t type, const rules::NullableText& rulePath, const std::string& path)
{
    return touches(
        test::policyRule({.policyType = type, .path = rulePath, .processName = "any", .operations = 1}),
        {.path = path});
}

bool touchesProcess(const rules::NullableText& process, const std::string& asked)
{
    return touches(test::watchRule({.path = "", .processName = process, .operations = 1}),
        {.path = "/a", .process = asked});
}

} // namespace

TEST(Touches, APathThatTheRulesTextCovers)
{
    EXPECT_TRUE(touchesPath(0, "/a/", "/a/b"));
    EXPECT_TRUE(touchesPath(0, "/a", "/ab"));
    EXPECT_FALSE(touchesPath(0, "/a/b", "/a/"));
    EXPECT_TRUE(touchesPath(1, "/a", "/a"));
    EXPECT_FALSE(touchesPath(1, "/a", "/a/"));
    EXPECT_TRUE(touchesPath(2, ".txt", "/a.txt"));
    EXPECT_FALSE(touchesPath(2, ".txt", "/a.txt/"));
    for (const std::int32_t type : {0, 1, 2, 4}) {
        EXPECT_TRUE(touchesPath(type, "any", "/a")) << type;
        EXPECT_TRUE(touchesPath(type, "", "/a")) << type;
        EXPECT_FALSE(touchesPath(type, {}, "/a")) << type;
    }
    EXPECT_FALSE(touchesPath(4, "/a", "/a"));
}

TEST(Touches, AProgramItsWholeProcessAndAnyInItsForms)
{
    for (const char* process : {"/bin/a", "/bin/a (-x)", "/bin/a via /bin/b", "any", "any via /bin/b",
             "any via any", "any via Tool", "any ancestor /bin/c"})
        EXPECT_TRUE(touchesProcess(process, "/bin/a")) << process;
    EXPECT_TRUE(touchesProcess("/bin/a via /bin/b", "/bin/a via /bin/b"));
    for (const char* process : {"/bin/ab", "/bin/b via /bin/a", "anything", ""})
        EXPECT_FALSE(touchesProcess(process, "/bin/a")) << process;
    EXPECT_FALSE(touchesProcess("/bin/a via /bin/c", "/bin/a via /bin/b"));
    EXPECT_FALSE(touchesProcess({}, "/bin/a"));
}

TEST(Touches, OneOfTheOperations)
{
    const rules::RuleRef rule = test::policyRule({.path = "any", .processName = "any", .operations = 3});
    EXPECT_TRUE(touches(rule, {.path = "/a", .operations = 18}));
    EXPECT_FALSE(touches(rule, {.path = "/a", .operations = 16}));
    EXPECT_FALSE(touches(rule, {.path = "/a", .operations = 0}));
}

TEST(Touches, EveryPathThatACoveringRuleWouldMakeRedundant)
{
    // A rule that makes a rule on a path redundant also touches that path.
    for (unsigned seed = 0; seed < 2000; ++seed) {
        test::RandomRules random(seed);
        const rules::PolicyRuleFields wide = random.policy();
        const rules::NullableText path = random.path();
        if (path.isNull() || wide.path.isNull())
            continue;
        const std::string_view text = wide.path.view();
        const bool isWide
            = text == "any" || text.empty() || (wide.policyType == 0 && path.view().starts_with(text));
        const bool isTouched = touches(test::policyRule(wide), {.path = std::string(path.view())});
        EXPECT_TRUE(!isWide || isTouched) << seed;
        if (wide.policyType == 0) {
            EXPECT_EQ(isTouched, isWide) << seed;
        }
    }
}

TEST(WhyTouches, NamesThePartOfThePathThatTheRuleSays)
{
    const struct {
        std::int32_t type;
        const char* path;
        const char* why;
    } cases[] = {{0, "/a/", "begins with it"}, {1, "/a/b", "the path itself"}, {2, "b", "ends with it"},
        {0, "any", "every path"}, {2, "", "every path"}};
    for (const auto& c : cases) {
        const rules::RuleRef rule
            = test::policyRule({.policyType = c.type, .path = c.path, .processName = "/bin/sh"});
        EXPECT_EQ(whyTouches(valueOf(rule), {.path = "/a/b"}), c.why);
    }
}

TEST(WhyTouches, NamesTheProgramWhereTheQuestionDoesOrTheRuleWatches)
{
    const auto why = [](const char* process, const char* asked) {
        return whyTouches(valueOf(test::policyRule({.path = "", .processName = process})),
            {.path = "/a", .process = asked});
    };
    EXPECT_EQ(why("/bin/sh", "/bin/sh"), "every path; this program");
    EXPECT_EQ(why("any", "/bin/sh"), "every path; any program");
    EXPECT_EQ(why("any via /bin/b", "/bin/sh"), "every path; any program via /bin/b");
    EXPECT_EQ(why("any ancestor /bin/b", "/bin/sh"), "every path; any program ancestor /bin/b");
    EXPECT_EQ(whyTouches(valueOf(test::watchRule({.path = "", .processName = "/bin/sh"})), {.path = "/a"}),
        "every path; program: /bin/sh");
}

TEST(Touches, AnswersTheSameOfARuleAndOfItsValue)
{
    test::RandomRules random(5);
    for (int count = 0; count < 500; ++count) {
        const rules::RuleRef rule = count % 3 == 0 ? rules::RuleRef(test::watchRule(random.watch()))
                                                   : test::policyRule(random.policy());
        const TouchQuestion question{.path = std::string(random.path().view()),
            .process = std::string(random.process().view()),
            .operations = random.operations()};
        EXPECT_EQ(touches(rule, question), touches(valueOf(rule), question));
    }
}

} // namespace quorvane::workflow
