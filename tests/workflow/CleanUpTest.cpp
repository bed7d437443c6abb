#include "workflow/CleanUp.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

class CleanUp : public testing::Test {
protected:
    CleanUp()
    {
        facts.existing = {"/bin/sh"};
        facts.folders = {"/Users/ann", "/home/me"};
    }

    rules::PolicyRulePtr add(rules::PolicyRuleFields fields)
    {
        fields.operations = 1;
        if (fields.processName.isNull())
            fields.processName = "/bin/sh";
        const rules::PolicyRulePtr rule = test::policyRule(std::move(fields));
        store.addPolicyRule(rule);
        return rule;
    }
    std::vector<DispensableRule> candidates()
    {
        KnownProblems known(RulesPlace::of(facts));
        auto found
            = cleanUpCandidates(*known.follow(store.storedRows(), false), places, RulesPlace::of(facts));
        doubtWhatMustStay(store, found);
        return found;
    }
    // "/a: doubt", one per line.
    std::string text()
    {
        std::string text;
        for (const DispensableRule& each : candidates()) {
            text += visitRule(
                each.rule, [](const auto& rule) { return std::string(rule.fields().path.view()); });
            text += each.doubt.empty() ? "\n" : ": " + each.doubt + "\n";
        }
        return text;
    }
    std::string doubtOf(const std::string& path) { return whyItMayComeBack(path, places, facts); }

    test::FakeProgramFacts facts;
    ChangingPlaces places{{{"/", "ext4"}, {"/data", "nfs4"}, {"/media/me/stick", "vfat", true}}, "/home/me"};
    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
};

} // namespace

TEST_F(CleanUp, OffersRedundantRulesAndThoseWithoutPathOrProgram)
{
    add({.path = "/bin/"});
    add({.policyType = 1, .path = "/bin/sh"});
    add({.path = "/gone"});
    add({.path = "any", .processName = "/bin/gone"});
    facts.folders.insert("/bin/");
    EXPECT_EQ(text(), "any\n/gone\n/bin/sh\n");
}

TEST_F(CleanUp, SaysWhyEachCanGo)
{
    add({.path = "/gone"});
    add({.path = "any", .processName = "/bin/sh via /bin/gone"});
    const auto found = candidates();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].reason, "Parent program is gone: nothing exists at /bin/gone.");
    EXPECT_EQ(found[1].reason, "Path is gone: nothing exists at /gone.");
}

TEST_F(CleanUp, LeavesSystemRulesAndProgramsThatAreOthersAlone)
{
    add({.path = "any", .constraint = "TEAM"});
    const auto system = add({.path = "/bin/sh", .system = true});
    add({.path = "/bin/sh", .system = true});
    EXPECT_EQ(text(), "");
}

TEST_F(CleanUp, LeavesOneOfRulesThatCoverEachOther)
{
    add({.path = "/bin/sh"});
    add({.path = "/bin/sh"});
    add({.path = "/bin/sh"});
    const auto found = candidates();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(text(), "/bin/sh\n/bin/sh\n/bin/sh: the rule that covers it goes\n");
    const PlannedChange plan = cleaningUp(store, found, rules::LineEnds::cut);
    EXPECT_EQ(plan.change.removed.size(), 2U);
    EXPECT_EQ(
        plan.remarks, std::vector<std::string>{"1 redundant rule stays: no rule that stays covers it."});
}

TEST_F(CleanUp, TellsTheReasonThatLeavesNoDoubt)
{
    add({.path = "/Volumes/none/"});
    add({.path = "/Volumes/none/a"});
    EXPECT_EQ(text(), "/Volumes/none/: on a volume that is not mounted\n/Volumes/none/a\n");
    add({.path = "/", .processName = "/bin/gone"});
    add({.path = "/x", .processName = "/bin/gone"});
    EXPECT_EQ(candidates().front().kind, FindingKind::invalidProgram);
    EXPECT_EQ(text(), "/\n/x\n/Volumes/none/: on a volume that is not mounted\n/Volumes/none/a\n");
}

TEST_F(CleanUp, KeepsARedundantRuleWhenWhatCoversItGoes)
{
    const auto wide = add({.path = "/gone/"});
    const auto narrow = add({.policyType = 2, .path = "/gone/narrow"});
    const auto found = candidates();
    ASSERT_EQ(found.size(), 2U);
    const PlannedChange plan = cleaningUp(store, found, rules::LineEnds::cut);
    ASSERT_EQ(plan.change.removed.size(), 1U);
    EXPECT_EQ(plan.change.removed.front().rule, rules::RuleRef(wide));
}

TEST_F(CleanUp, PassesOverRulesThatHaveGoneMeanwhile)
{
    const auto rule = add({.path = "/gone"});
    const auto found = candidates();
    store.takeOutPolicyRule(*rule);
    const PlannedChange plan = cleaningUp(store, found, rules::LineEnds::cut);
    EXPECT_TRUE(plan.change.isEmpty());
    EXPECT_TRUE(plan.remarks.empty());
}

TEST_F(CleanUp, DoubtsWhatMightComeBack)
{
    const struct {
        const char* why;
        const char* path;
        const char* doubt;
    } cases[] = {
        {"an ordinary place", "/usr/gone", ""},
        {"a home that is there", "/Users/ann/gone", ""},
        {"somebody's home that is not", "/Users/bob/gone", "in a home folder that is not there"},
        {"the same elsewhere", "/home/bob", "in a home folder that is not there"},
        {"the person's own home", "~/gone", ""},
        {"a volume that is not mounted", "/Volumes/Backup/file", "on a volume that is not mounted"},
        {"another one", "/media/me/other/file", "on a volume that is not mounted"},
        {"one that is mounted and removable", "/media/me/stick/file", "on a removable volume"},
        {"a place on another machine", "/data/file", "on another machine"},
        {"a folder beside it", "/database", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(doubtOf(c.path), c.doubt) << c.why;
    places.home = "/home/other";
    EXPECT_EQ(doubtOf("~/gone"), "in a home folder that is not there");
}

TEST_F(CleanUp, TicksNothingThatMightComeBack)
{
    add({.path = "/Volumes/Backup/"});
    add({.path = "/gone"});
    EXPECT_EQ(text(), "/Volumes/Backup/: on a volume that is not mounted\n/gone\n");
}

} // namespace quorvane::workflow
