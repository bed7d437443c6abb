#include "workflow/RuleFindings.h"
#include "rules/RuleCodes.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorvane::workflow {

namespace {

rules::RuleRef ruleOn(
    const rules::NullableText& path, std::int32_t type = rules::PolicyType::path, bool system = false)
{
    return test::policyRule(
        {.policyType = type, .path = path, .processName = "/bin/sh", .operations = 1, .system = system});
}

std::string namesOf(const std::vector<RuleFinding>& findings)
{
    std::string names;
    for (const RuleFinding& finding : findings)
        names.append(names.empty() ? "" : " ").append(findingName(finding.kind));
    return names;
}

} // namespace

TEST(RuleFindings, APathIsMissingOnlyWhereAUserRuleNamesAFile)
{
    const test::TemporaryFolder folder;
    const std::string present = folder.write("present", "x");
    const std::string absent = folder.path("absent");
    const struct {
        const char* why;
        rules::RuleRef rule;
        bool missing;
    } cases[] = {
        {"an absolute path without a file", ruleOn(absent), true},
        {"an absolute path with one", ruleOn(present), false},
        {"a folder exists as well", ruleOn(folder.path() + "/"), false},
        {"a prefix is looked up as it stands", ruleOn(absent, rules::PolicyType::prefix), true},
        {"a suffix names no file", ruleOn(absent, rules::PolicyType::suffix), false},
        {"a system rule is never missing", ruleOn(absent, rules::PolicyType::path, true), false},
        {"an unknown type is looked up", ruleOn(absent, 3), true},
        {"a path that begins neither with / nor with ~/", ruleOn("absent"), false},
        {"a tilde alone is not the home folder", ruleOn("~absent"), false},
        {"the word any", ruleOn("any"), false},
        {"no path", ruleOn({}), false},
        {"a watch rule", test::watchRule({.policyType = 1, .path = absent, .processName = "/bin/sh"}), true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(isPathMissing(c.rule), c.missing) << c.why;
}

TEST(RuleFindings, AResourceOrDeviceIsNeverMissing)
{
    for (const char* path :
        {":NVRAM/absent", ":ATTACH/absent", ":IOKIT/absent", ":KMOD/absent", "/dev/absent"}) {
        EXPECT_FALSE(isPathMissing(ruleOn(path))) << path;
        EXPECT_FALSE(isPathMissing(test::watchRule({.policyType = 1, .path = path}))) << path;
    }
}

TEST(RuleFindings, ATildeIsTheHomeFolder)
{
    const test::TemporaryFolder home;
    home.write("Documents/letter", "x");
    setenv("HOME", home.path().c_str(), 1);
    EXPECT_FALSE(isPathMissing(ruleOn("~/Documents/letter")));
    EXPECT_TRUE(isPathMissing(ruleOn("~/Documents/gone")));
}

TEST(RuleFindings, ABrokenSymbolicLinkIsMissing)
{
    const test::TemporaryFolder folder;
    std::filesystem::create_symlink(folder.path("nowhere"), folder.path("link"));
    EXPECT_TRUE(isPathMissing(ruleOn(folder.path("link"))));
}

TEST(RuleFindings, NameTheRuleThatCoversARedundantOne)
{
    // given a rule on a folder and one on a file in it
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    store.addPolicyRule(test::policyRule({.path = "/usr/", .processName = "/bin/sh", .operations = 3}));
    const auto narrow
        = test::policyRule({.policyType = 1, .path = "/usr/bin", .processName = "/bin/sh", .operations = 1});
    store.addPolicyRule(narrow);

    // when the second is examined
    const auto findings = findingsForRule(store, narrow);

    // then the first is named
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, FindingKind::redundant);
    ASSERT_NE(findings[0].other, nullptr);
    EXPECT_EQ(ruleText(*findings[0].other), R"(allow prefix "/usr/" "/bin/sh" rw "" "" "0")");
}

TEST(RuleFindings, TellOfRulesThatWouldBeLostInTheFile)
{
    const rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    const auto findingOf = [&](rules::PolicyRuleFields fields) {
        fields.processName = "/bin/sh";
        const auto findings = findingsForRule(store, test::policyRule(std::move(fields)));
        return findings.empty() ? std::string() : std::string(findingName(findings.back().kind));
    };
    EXPECT_EQ(findingOf({.path = "/usr", .operations = 1}), "");
    EXPECT_EQ(findingOf({.path = "/usr", .operations = 0}), "unwritable");
    EXPECT_EQ(findingOf({.policyType = 2, .path = "/M\xC3\xBCsik", .operations = 1}), "unwritable");
    EXPECT_EQ(findingOf({.policyType = 2, .path = "a\"b", .operations = 1}), "unwritable");
    EXPECT_EQ(findingOf({.policyType = 2, .path = "blank ", .operations = 1}), "unwritable");
    EXPECT_EQ(findingOf({.path = "/usr", .tag = "a \"b\"", .operations = 1}), "");
    // system rules are never written
    EXPECT_EQ(findingOf({.path = "/usr", .operations = 0, .system = true}), "");
}

TEST(RuleFindings, AProgramThatFailsItsCheckStandsBetweenRedundancyAndTheMissingPath)
{
    // given a rule with every problem, covered by another one
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    store.addPolicyRule(test::policyRule({.path = "/none", .processName = "/none/program", .operations = 3}));
    const rules::RuleRef rule = test::policyRule({.path = "/none/\xC3\xA9", .processName = "/none/program"});
    std::vector<std::string> names;
    for (const RuleFinding& finding : findingsForRule(store, rule))
        names.emplace_back(findingName(finding.kind));
    EXPECT_EQ(names, (std::vector<std::string>{"redundant", "invalid", "missing", "unwritable"}));
    const RuleFinding invalid = findingsForRule(store, rule).at(1);
    EXPECT_EQ(invalid.programFault, ProgramFault::missing);
    EXPECT_EQ(findingText(invalid), "Nothing exists at the path of the program.");
    EXPECT_EQ(pathFindingsForRule(store, rule).size(), 3U) << "without the program";
}

TEST(RuleFindings, AreOnlyOfTheKindsThatAreLookedFor)
{
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    store.addPolicyRule(test::policyRule({.path = "/none", .processName = "/none/program", .operations = 3}));
    const rules::RuleRef rule = test::policyRule({.path = "/none/\xC3\xA9", .processName = "/none/program"});
    const auto found
        = [&](FindingKinds kinds) { return namesOf(findingsForRule(store, rule, {.kinds = kinds})); };
    EXPECT_EQ(found({}), "");
    EXPECT_EQ(found({FindingKind::missingPath, FindingKind::redundant}), "redundant missing");
    EXPECT_EQ(found(FindingKinds::all()), "redundant invalid missing unwritable");
    EXPECT_EQ(
        namesOf(findingsForRule(store, rule, {.place = RulesPlace::nowhere()})), "redundant unwritable");
}

TEST(RuleFindings, ADoubtfulTeamIsUnprovenUnlessTheProgramIsInvalid)
{
    test::FakeProgramFacts facts;
    facts.existing = {"/bin/tool"};
    facts.teams = {{"/bin/tool", "TEAM123456"}};
    facts.proofs = {{"/bin/tool", TeamProof::foreignRoot}};
    const rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    const auto found = [&](const char* process, const char* constraint) {
        const rules::RuleRef rule = test::policyRule({.policyType = rules::PolicyType::suffix,
            .path = ".x",
            .processName = process,
            .constraint = constraint,
            .operations = 1});
        return findingsForRule(store, rule, {.place = RulesPlace::of(facts)});
    };
    EXPECT_EQ(namesOf(found("/bin/tool", "TEAM123456")), "unproven");
    EXPECT_EQ(findingReason(found("/bin/tool", "TEAM123456").at(0)),
        "signed under a root other than the platform vendor's");
    EXPECT_EQ(findingText(found("/bin/tool", "TEAM123456").at(0)),
        "The program's team is only a name: it is signed under a root other than the platform vendor's.");
    EXPECT_EQ(namesOf(found("/bin/tool", "OTHER")), "invalid");
    EXPECT_EQ(namesOf(found("/bin/tool via /gone", "TEAM123456")), "invalid");
    EXPECT_EQ(namesOf(found("/bin/tool", "")), "") << "no team is trusted";
    EXPECT_EQ(namesOf(found("/bin/tool", "APPLE_PF_BINARY")), "") << "the mark is enough by itself";
    EXPECT_EQ(namesOf(found("any via /bin/tool", "TEAM123456")), "") << "no program is looked at";
    facts.proofs["/bin/tool"] = TeamProof::codeDiffers;
    EXPECT_EQ(findingReason(found("/bin/tool", "TEAM123456").at(0)), "its code is not what was signed");
    EXPECT_EQ(findingText(found("/bin/tool", "TEAM123456").at(0)),
        "The program's code is not what its team has signed.");
    facts.proofs["/bin/tool"] = TeamProof::proven;
    EXPECT_EQ(namesOf(found("/bin/tool", "TEAM123456")), "");
}

TEST(RowFindings, AnOverlapNamesTheEarliestEarlierRow)
{
    // given two rules that allow, then one that denies, and a watch rule before all of them
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    store.addWatchRule(test::watchRule({.path = "/usr/", .processName = "any", .operations = 1}));
    for (const std::int32_t policyClass :
        {rules::PolicyClass::allow, rules::PolicyClass::allow, rules::PolicyClass::deny}) {
        store.addPolicyRule(test::policyRule({.policyClass = policyClass,
            .path = "/usr/",
            .processName = "/bin/sh",
            .operations = static_cast<std::uint32_t>(3 - policyClass)}));
    }
    // when overlaps are searched for
    const RowFindings findings(store, false, {.kinds = {FindingKind::overlap, FindingKind::redundant}});

    // then the last row reports only the first policy rule
    EXPECT_EQ(namesOf(findings.at(0)), "");
    EXPECT_EQ(namesOf(findings.at(1)), "redundant");
    ASSERT_EQ(namesOf(findings.at(3)), "overlap");
    EXPECT_EQ(findings.at(3).at(0).other, policyRuleIn(store.ruleAtIndex(1, false)));
}

TEST(RowFindings, ASystemRuleOverlapsNothing)
{
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    for (const bool system : {true, false}) {
        store.addPolicyRule(
            test::policyRule({.policyClass = system ? rules::PolicyClass::allow : rules::PolicyClass::deny,
                .path = "/usr/",
                .processName = "/bin/sh",
                .operations = 1,
                .system = system}));
    }
    const RowFindings findings(store, true, {.kinds = {FindingKind::overlap}});
    EXPECT_EQ(namesOf(findings.at(0)) + namesOf(findings.at(1)), "");
}

TEST(RowFindings, RulesOfOneApplicationThatFollowEachOtherAskAboutItsProgramOnce)
{
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    for (const char* path : {"/a", "/b", "/c"})
        store.addPolicyRule(test::policyRule({.path = path, .processName = "/bin/gone", .operations = 1}));
    test::FakeProgramFacts facts;
    const RowFindings findings(
        store, false, {{FindingKind::invalidProgram, FindingKind::unproven}, RulesPlace::of(facts)});
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(namesOf(findings.at(row)), "invalid");
    EXPECT_EQ(facts.questions, 1);
}

TEST(RowFindings, AnotherProgramConstraintOrKindOfRuleIsAskedAboutAnew)
{
    // given rules that differ from the one before in one respect each
    rules::RuleManager store(platform::Locations("/nonexistent", "nobody"), test::silentLog());
    store.addWatchRule(test::watchRule({.path = "/w", .processName = "/bin/gone", .operations = 1}));
    const struct {
        const char* process;
        const char* constraint;
        bool system;
    } cases[] = {{"/bin/gone", "", false}, {"/bin/gone", "", true}, {"/bin/here", "", false},
        {"/bin/here", "TEAM123456", false}};
    for (const auto& c : cases) {
        store.addPolicyRule(test::policyRule({.path = "/p",
            .processName = c.process,
            .constraint = c.constraint,
            .operations = 1,
            .system = c.system}));
    }
    test::FakeProgramFacts facts;
    facts.existing = {"/bin/here"};
    // when they are asked in turn
    const RowFindings findings(store, true, {{FindingKind::invalidProgram}, RulesPlace::of(facts)});

    // then each has its own findings
    EXPECT_EQ(namesOf(findings.at(0)), "");
    for (std::size_t row = 1; row < 5; ++row) {
        const rules::PolicyRuleFields& rule = policyRuleIn(store.ruleAtIndex(row, true))->fields();
        const bool isInvalid = !rule.system
            && (rule.processName.view() == "/bin/gone" || rule.constraint.view() == "TEAM123456");
        EXPECT_EQ(namesOf(findings.at(row)), isInvalid ? "invalid" : "") << row;
    }
}

TEST(FindingKinds, HaveNamesByWhichTheyAreFound)
{
    std::string names;
    for (const FindingKind kind : allFindingKinds) {
        names.append(findingName(kind)).append(" ");
        EXPECT_EQ(findingKindNamed(findingName(kind)), kind);
        EXPECT_FALSE(findingKindText(kind).empty());
    }
    EXPECT_EQ(names, "redundant invalid missing unwritable joined overlap unproven ");
    EXPECT_FALSE(findingKindNamed("Redundant"));
    EXPECT_FALSE(findingKindNamed(""));
    EXPECT_FALSE(FindingKinds::usual().contains(FindingKind::overlap));
    EXPECT_TRUE(FindingKinds::usual().contains(FindingKind::unproven));
}

} // namespace quorvane::workflow
