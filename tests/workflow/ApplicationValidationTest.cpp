#include "workflow/ApplicationValidation.h"
#include "codesign/Digests.h"
#include "rules/ApplicationIdentity.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace quorvane::workflow {

namespace {

class ApplicationValidation : public testing::Test {
protected:
    ApplicationValidation() { facts.existing = {"/bin/tool", "/usr/bin/parent"}; }

    std::string faultOf(rules::PolicyRuleFields fields, std::string_view name = "tool")
    {
        const rules::PolicyRule rule(std::move(fields));
        const auto fault = programFault(rule, name, RulesPlace::of(facts));
        EXPECT_EQ(isValidApplicationPath(rule, name, RulesPlace::of(facts)), !fault);
        return fault ? std::string(programFaultWords(*fault)) : "none";
    }
    std::string faultOf(const std::string& process, const std::string& constraint = {})
    {
        return faultOf({.processName = process, .constraint = constraint});
    }

    test::FakeProgramFacts facts;
};

constexpr const char* notFound = "program not found";
constexpr const char* noMatch = "does not match its constraint";
constexpr const char* noParent = "parent program not found";

} // namespace

TEST_F(ApplicationValidation, AnExistingProgramIsValidAndAMissingOneIsNot)
{
    EXPECT_EQ(faultOf("/bin/tool"), "none");
    EXPECT_EQ(faultOf("/Applications/Gone.app/Contents/MacOS/Gone"), notFound);
    EXPECT_EQ(faultOf("tool"), notFound);
    EXPECT_EQ(faultOf(""), notFound);
    EXPECT_EQ(faultOf(rules::PolicyRuleFields{.processName = {}}), notFound);
}

TEST_F(ApplicationValidation, SomeRulesAreValidWithoutLookingAtAnyFile)
{
    const struct {
        const char* why;
        rules::PolicyRuleFields rule;
        const char* name;
    } cases[] = {
        {"a system rule", {.processName = "/Applications/Gone", .constraint = "T", .system = true}, "Gone"},
        {"the name says any process", {.processName = "/Applications/Gone"}, "Any Process via login"},
        {"a folder", {.processName = "/Applications/"}, "Applications"},
        {"a resource", {.processName = ":NVRAM/x via /gone"}, "x via gone"},
        {"a temporary place", {.processName = "/private/var/folders/xy/T/ending-with-dot."}, "dot."},
        {"a temporary place whatever it pins",
            {.processName = "/private/var/folders/.", .constraint = test::sha1OfNothing}, "."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(faultOf(c.rule, c.name), "none") << c.why;
    EXPECT_EQ(facts.questions, 0);
}

TEST_F(ApplicationValidation, WhatOnlyResemblesThoseRulesIsLookedAt)
{
    const struct {
        const char* why;
        const char* process;
        const char* name;
    } cases[] = {
        {"the name holds it later", "/gone", "Not Any Process"},
        {"the name is in small letters", "/gone", "any process"},
        {"a slash before the parent part only", "/gone via /usr/", "gone"},
        {"a colon inside", "/a:b", "a:b"},
        {"a temporary place without the dot", "/private/var/folders/xy/T/file", "file"},
        {"a dot elsewhere", "/private/var/tmp/file.", "file."},
        {"the other name of that place", "/var/folders/xy/T/file.", "file."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(faultOf(rules::PolicyRuleFields{.processName = c.process}, c.name), notFound) << c.why;
}

TEST_F(ApplicationValidation, FortyCharactersAreTheSha1OfTheFile)
{
    const std::string digest = codesign::sha1("contents");
    facts.sha1s["/bin/tool"] = digest;
    facts.teams["/bin/tool"] = std::string(40, 'T');
    EXPECT_EQ(faultOf("/bin/tool", digest), "none");
    EXPECT_EQ(faultOf("/bin/tool", codesign::sha1("other")), noMatch);
    EXPECT_EQ(faultOf("/bin/tool", std::string(40, 'T')), noMatch) << "never a team";
}

TEST_F(ApplicationValidation, SixtyFourCharactersAreTheSha256OfTheFile)
{
    const std::string digest = codesign::sha256("contents");
    facts.sha256s["/bin/tool"] = digest;
    facts.teams["/bin/tool"] = std::string(64, 'T');
    EXPECT_EQ(faultOf("/bin/tool", digest), "none");
    EXPECT_EQ(faultOf("/bin/tool", codesign::sha256("other")), noMatch);
    EXPECT_EQ(faultOf("/bin/tool", std::string(64, 'T')), noMatch);
}

TEST_F(ApplicationValidation, ADigestInCapitalsMatchesNoProgram)
{
    facts.sha1s["/bin/tool"] = codesign::sha1("contents");
    facts.sha256s["/bin/tool"] = codesign::sha256("contents");
    for (const std::string& digest : {codesign::sha1("contents"), codesign::sha256("contents")}) {
        std::string capitals = digest;
        std::transform(capitals.begin(), capitals.end(), capitals.begin(),
            [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        EXPECT_EQ(faultOf("/bin/tool", digest), "none");
        EXPECT_EQ(faultOf("/bin/tool", capitals), noMatch);
    }
}

TEST_F(ApplicationValidation, AProgramThatCannotBeReadIsTakenForAnEmptyFile)
{
    EXPECT_EQ(faultOf("/bin/tool", test::sha1OfNothing), "none");
    EXPECT_EQ(faultOf("/bin/tool", test::sha256OfNothing), "none");
    EXPECT_EQ(faultOf("/bin/tool", codesign::sha256("contents")), noMatch);
}

TEST_F(ApplicationValidation, ThePlatformMarkerPassesForEveryProgram)
{
    facts.teams["/bin/tool"] = "TEAM123456";
    for (const char* program : {"/bin/tool", "/usr/bin/parent"}) {
        ASSERT_EQ(facts.platformIdentifier(program), 0U) << "no program of the platform";
        EXPECT_EQ(faultOf(program, "APPLE_PF_BINARY"), "none") << program;
    }
    EXPECT_EQ(faultOf("/usr/bin/parent", "APPLE_PF_BINAR"), noMatch);
    EXPECT_EQ(faultOf("/gone", "APPLE_PF_BINARY"), notFound) << "where there is no program, nothing passes";
}

TEST_F(ApplicationValidation, AnyOtherLengthIsATeam)
{
    facts.teams["/bin/tool"] = "TEAM123456";
    EXPECT_EQ(faultOf("/bin/tool", "TEAM123456"), "none");
    EXPECT_EQ(faultOf("/bin/tool", "team123456"), noMatch);
    EXPECT_EQ(faultOf("/bin/tool", "TEAM12345"), noMatch);
    EXPECT_EQ(faultOf("/bin/tool", codesign::sha1("").substr(1)), noMatch);
    EXPECT_EQ(faultOf("/usr/bin/parent", "TEAM123456"), noMatch) << "a program without a team";
}

TEST_F(ApplicationValidation, LengthsAreCountedInCharactersNotInBytes)
{
    std::string text;
    for (int i = 0; i < 20; ++i)
        text += "\xC3\xA9";
    facts.teams["/bin/tool"] = text;
    EXPECT_EQ(faultOf("/bin/tool", text), "none") << "20 characters in 40 bytes are a team";
    facts.teams["/bin/tool"] = text + text;
    EXPECT_EQ(faultOf("/bin/tool", text + text), noMatch) << "40 characters are a digest";
}

TEST_F(ApplicationValidation, AParentPartMustExistOrBeAny)
{
    EXPECT_EQ(faultOf("/bin/tool via /usr/bin/parent"), "none");
    EXPECT_EQ(faultOf("/bin/tool via any"), "none");
    EXPECT_EQ(faultOf("/bin/tool via /usr/bin/missing"), noParent);
    EXPECT_EQ(faultOf("/gone via /usr/bin/missing"), notFound) << "the program is told of first";
    EXPECT_EQ(faultOf("/bin/tool via /usr/bin/missing", "TEAM123456"), noMatch);
}

TEST_F(ApplicationValidation, AskedOfARuleItTakesTheNameThatTheTableShows)
{
    const RulesPlace place = RulesPlace::of(facts);
    EXPECT_FALSE(programFault(test::policyRule({.processName = "any via /usr/bin/missing"}), place));
    EXPECT_EQ(programFault(test::policyRule({.processName = "/gone via any"}), place), ProgramFault::missing);
    EXPECT_FALSE(programFault(test::watchRule({.processName = "/gone"}), place))
        << "a watch rule has no fault";
}

TEST(ApplicationValidationOnDisk, ADigestOfAnotherFileIsNoMatch)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", "contents");
    const auto isValid = [&path](const std::string& constraint) {
        return isValidApplicationPath(
            rules::PolicyRule({.processName = path, .constraint = constraint}), "program");
    };
    EXPECT_TRUE(isValid(codesign::sha256("contents")));
    EXPECT_TRUE(isValid(codesign::sha1("contents")));
    EXPECT_FALSE(isValid(codesign::sha256("content")));
    EXPECT_FALSE(isValid("TEAM123456"));
}

} // namespace quorvane::workflow
