#include "workflow/PlannedChange.h"
#include "tests/rules/RandomRules.h"
#include "tests/rules/ReferenceStore.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/workflow/DocumentSandbox.h"
#include "workflow/DifferenceText.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

std::string ruleLine(const std::string& path, const std::string& process = "any",
    const std::string& rest = "", const std::string& start = "allow prefix",
    const std::string& operations = "r")
{
    return start + " \"" + path + "\" \"" + process + "\" " + operations
        + (rest.empty() ? R"( "" "" "0")" : rest) + "\n";
}

class PlannedChangeTest : public testing::Test {
protected:
    void open(const std::string& rules)
    {
        box.writeUserRules(rules);
        work = std::make_unique<test::DocumentAtWork>(box);
    }

    std::vector<rules::RuleRef> userRules() const { return work->store->userRules(); }

    // The contents of the file after the change.
    std::string carriedOut(const PlannedChange& plan)
    {
        EXPECT_EQ(plan.refusal, std::nullopt);
        EXPECT_FALSE(work->document->perform(plan.change, {"Change Rules"}).failure);
        return file();
    }
    std::string file() const { return test::TemporaryFolder::contents(box.locations.userRulesFile()); }

    PlannedChange patch(const RulePatch& change, rules::LineEnds lineEnds = rules::LineEnds::cut)
    {
        return patchingOf(*work->store, userRules(), change, facts, lineEnds);
    }

    static std::vector<std::string> changes(const PlannedChange& plan)
    {
        return differenceTexts(plan.difference);
    }

    test::StoreSandbox box;
    test::FakeProgramFacts facts;
    std::unique_ptr<test::DocumentAtWork> work;
};

using Lines = std::vector<std::string>;

} // namespace

TEST_F(PlannedChangeTest, APatchChangesWhatItNamesAndNothingElse)
{
    open(ruleLine("/a", "/bin/sh", R"( "old" "T" "7")"));
    const PlannedChange plan = patch({.tag = "new",
        .ruleClass = 1,
        .operations = RulePatch::Operations{RulePatch::Operations::replaced, 18},
        .constraint = "TEAM"});
    EXPECT_EQ(plan.unchanged, 0U);
    EXPECT_EQ(carriedOut(plan), ruleLine("/a", "/bin/sh", R"( "new" "TEAM" "7")", "deny prefix", "wx"));
}

TEST_F(PlannedChangeTest, OperationsAreReplacedAddedAndRemoved)
{
    using Operations = RulePatch::Operations;
    const struct {
        Operations patch;
        const char* result;
    } cases[] = {
        {{Operations::replaced, 8}, "m"}, {{Operations::added, 4}, "rwc"}, {{Operations::removed, 1}, "w"}};
    for (const auto& c : cases) {
        open(ruleLine("/a", "any", "", "allow prefix", "rw"));
        EXPECT_EQ(
            carriedOut(patch({.operations = c.patch})), ruleLine("/a", "any", "", "allow prefix", c.result));
    }
}

TEST_F(PlannedChangeTest, RulesThatNeedNothingAreCountedAndNotTouched)
{
    open(ruleLine("/a", "any", R"( "t" "" "0")") + ruleLine("/b"));
    const PlannedChange plan = patch({.tag = "t"});
    EXPECT_EQ(plan.unchanged, 1U);
    EXPECT_EQ(plan.change.changed.size(), 1U);
    EXPECT_TRUE(patch({.ruleClass = 0}).change.isEmpty());
    EXPECT_EQ(patch({.ruleClass = 0}).unchanged, 2U);
}

TEST_F(PlannedChangeTest, AWatchRuleHasNoConstraintAndStaysAWatchRule)
{
    open(R"(watch prefix "/w" "/bin/sh" r "")"
         "\n"
        + ruleLine("/a"));
    EXPECT_EQ(patch({.constraint = "TEAM"}).unchanged, 1U);
    EXPECT_NE(patch({.ruleClass = 0}).refusal, std::nullopt);
    EXPECT_NE(patch({.ruleClass = 2}).refusal, std::nullopt);
    EXPECT_TRUE(patch({.ruleClass = 2}).change.isEmpty());
}

TEST_F(PlannedChangeTest, OfTwoRulesThatBecomeEqualTheOneThatWasThatRuleStays)
{
    open(ruleLine("/a", "any", R"( "first" "" "0")", "allow prefix", "r")
        + ruleLine("/a", "any", R"( "second" "" "0")", "allow prefix", "rw"));
    const PlannedChange plan
        = patch({.operations = RulePatch::Operations{RulePatch::Operations::replaced, 3}});
    EXPECT_EQ(changes(plan), Lines{R"(removed: allow prefix "/a" "any" r "first" "" "0")"});
    EXPECT_EQ(plan.unchanged, 1U);
    EXPECT_EQ(carriedOut(plan), ruleLine("/a", "any", R"( "second" "" "0")", "allow prefix", "rw"));
}

TEST_F(PlannedChangeTest, OfTwoRulesThatBothBecomeAnotherTheEarlierStays)
{
    open(ruleLine("/a", "any", R"( "first" "" "0")", "allow prefix", "r")
        + ruleLine("/a", "any", R"( "second" "" "0")", "allow prefix", "rw"));
    EXPECT_EQ(carriedOut(patch({.operations = RulePatch::Operations{RulePatch::Operations::replaced, 4}})),
        ruleLine("/a", "any", R"( "first" "" "0")", "allow prefix", "c"));
}

TEST_F(PlannedChangeTest, ARuleThatLeavesAnotherRulesPlaceIsNoObstacle)
{
    // The first becomes equal to the former second, which becomes a different rule.
    open(ruleLine("/a", "/bin/x", "", "allow prefix", "r")
        + ruleLine("/a", "/bin/x", "", "allow prefix", "rw"));
    const PlannedChange plan = patch({.operations = RulePatch::Operations{RulePatch::Operations::added, 2}});
    EXPECT_EQ(carriedOut(plan), ruleLine("/a", "/bin/x", "", "allow prefix", "rw"));
}

TEST_F(PlannedChangeTest, WhatDoesNotComeBackFromTheFileIsRefused)
{
    open(ruleLine("/a"));
    EXPECT_NE(patch({.operations = RulePatch::Operations{RulePatch::Operations::removed, 31}}).refusal,
        std::nullopt);
    EXPECT_NE(patch({.tag = "a\nb"}).refusal, std::nullopt);
    EXPECT_NE(patch({.tag = "blank "}).refusal, std::nullopt);
    EXPECT_NE(patch({.constraint = "A\"B"}).refusal, std::nullopt);
    const PlannedChange cut = patch({.tag = "\u00e9"});
    ASSERT_TRUE(cut.refusal);
    EXPECT_NE(cut.refusal->find("wholeLines=true"), std::string::npos);
    EXPECT_TRUE(cut.change.isEmpty());
    EXPECT_EQ(patch({.tag = "\u00e9"}, rules::LineEnds::whole).refusal, std::nullopt);
}

TEST_F(PlannedChangeTest, ATagsDoubleQuotesAreLeftOut)
{
    open(ruleLine("/a"));
    EXPECT_EQ(carriedOut(patch({.tag = "say \"hi\""})), ruleLine("/a", "any", R"( "say hi" "" "0")"));
    EXPECT_EQ(patch({.tag = "say \"hi\""}).unchanged, 1U);
}

TEST_F(PlannedChangeTest, IsRefusedWhereItWouldCutAnotherRule)
{
    open(ruleLine("/a") + ruleLine("/caf\u00e9s"));
    const std::vector<rules::RuleRef> first{userRules().front()};
    const auto plan = [&](rules::LineEnds lineEnds) {
        return patchingOf(*work->store, first, {.tag = "t"}, facts, lineEnds);
    };
    EXPECT_NE(plan(rules::LineEnds::cut).refusal, std::nullopt);
    EXPECT_EQ(plan(rules::LineEnds::whole).refusal, std::nullopt);
    EXPECT_NE(removalOf(*work->store, first, rules::LineEnds::cut).refusal, std::nullopt);
    EXPECT_EQ(removalOf(*work->store, userRules(), rules::LineEnds::cut).refusal, std::nullopt);
    EXPECT_EQ(
        patchingOf(*work->store, first, {.tag = ""}, facts, rules::LineEnds::cut).refusal, std::nullopt);
}

TEST_F(PlannedChangeTest, BindsEachRuleToItsProgramAsItIs)
{
    facts.existing = {"/opt/tool", "/opt/signed"};
    facts.teams["/opt/signed"] = "TEAM";
    open(ruleLine("/a", "/opt/signed", R"( "" "OLD" "0")") + ruleLine("/a", "/gone", R"( "" "KEPT" "0")")
        + ruleLine("/a", "any", R"( "" "KEPT" "0")"));
    const PlannedChange plan = patch({.isBoundToProgram = true});
    EXPECT_EQ(changes(plan).size(), 1U);
    EXPECT_EQ(plan.unchanged, 2U);
    EXPECT_EQ(plan.remarks.size(), 2U);
    EXPECT_NE(carriedOut(plan).find(ruleLine("/a", "/opt/signed", R"( "" "TEAM" "0")")), std::string::npos);
}

TEST(MovedProcess, ReplacesWholePathsWhereverTheyStand)
{
    const struct {
        const char* process;
        const char* moved;
    } cases[] = {{"/old", "/new"}, {"/old (-x)", "/new (-x)"}, {"/old via /p", "/new via /p"},
        {"/p via /old", "/p via /new"}, {"/old via /old", "/new via /new"},
        {"/p via /old (-y)", "/p via /new (-y)"}, {"/old via any", "/new via any"},
        {"any via /old", "any via /new"}, {"any ancestor /old", "any ancestor /new"},
        {"any ancestor /old (-z)", "any ancestor /new (-z)"},
        {"any ancestor /old via /old", "any ancestor /new via /new"}, {"any", "any"}, {"/older", "/older"},
        {"/x/old", "/x/old"}, {"/old/x", "/old/x"}, {"any via old", "any via old"},
        {"/p via any", "/p via any"}, {"", ""}};
    for (const auto& c : cases)
        EXPECT_EQ(movedProcess(c.process, "/old", "/new"), c.moved) << c.process;
}

TEST_F(PlannedChangeTest, AMoveKeepsConstraintsAndFoldsWhatIsThereAlready)
{
    open(ruleLine("/a", "/new", R"( "mine" "" "0")") + ruleLine("/a", "/old", R"( "theirs" "" "0")")
        + ruleLine("/b", "/old", R"( "" "KEPT" "5")"));
    const PlannedChange plan = movingOf(*work->store, "/old", "/new", rules::LineEnds::cut);
    EXPECT_EQ(carriedOut(plan),
        ruleLine("/a", "/new", R"( "mine" "" "0")") + ruleLine("/b", "/new", R"( "" "KEPT" "5")"));
    EXPECT_TRUE(movingOf(*work->store, "/old", "/new", rules::LineEnds::cut).change.isEmpty());
}

TEST_F(PlannedChangeTest, ARedundantRuleGoesOnlyWhileOneThatStaysCoversIt)
{
    // The first two cover each other.
    open(ruleLine("", "/p", R"( "one" "" "0")") + ruleLine("any", "/p", R"( "two" "" "0")")
        + ruleLine("/a/", "/p") + ruleLine("/a/b", "/p"));
    const std::vector<rules::RuleRef> all = userRules();
    const auto left = [&](const std::vector<rules::RuleRef>& rules, const std::vector<rules::RuleRef>& gone) {
        const std::vector<rules::RuleRef> dispensable = dispensableRules(*work->store, rules, gone);
        std::string paths;
        for (const rules::RuleRef& rule : dispensable)
            paths += std::string(visitRule(rule, [](const auto& record) { return record.path().view(); }))
                + ";";
        return paths;
    };
    EXPECT_EQ(left(all, {}), ";/a/;/a/b;");
    EXPECT_EQ(left({all[3]}, {}), "/a/b;");
    EXPECT_EQ(left({all[0], all[1]}, {all[2]}), ";");
    EXPECT_EQ(left({all[2], all[3]}, {all[0], all[1]}), "/a/b;");
}

// Every rule removed as redundant is covered by one that stays, and none that stays could have been removed.
TEST(DispensableRules, AreCoveredByWhatStaysAndAreAllThatAre)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        test::RandomRules random(seed);
        rules::RuleManager store(platform::Locations("/nonexistent", "ann"), test::silentLog());
        for (std::size_t count = random.below(12); count > 0; --count) {
            rules::PolicyRuleFields fields = random.policy();
            fields.system = random.below(6) == 0;
            store.addPolicyRule(test::policyRule(fields));
        }
        const std::vector<rules::RuleRef> all = store.userRules();
        const std::vector<rules::RuleRef> going = dispensableRules(store, all, {});
        test::ReferenceStore rest;
        for (const rules::RuleRef& rule : store.allRules()) {
            const bool goes = std::any_of(going.begin(), going.end(),
                [&](const rules::RuleRef& other) { return addressOf(other) == addressOf(rule); });
            if (!goes)
                rest.add(std::get<rules::PolicyRulePtr>(rule));
        }
        for (const rules::RuleRef& rule : all) {
            const bool goes = std::any_of(going.begin(), going.end(),
                [&](const rules::RuleRef& other) { return addressOf(other) == addressOf(rule); });
            EXPECT_EQ(rest.coveringRule(*policyRuleIn(rule)) != nullptr, goes) << seed;
        }
    }
}

// A change of many rules is one action: one undo restores the exact bytes of the file, in the same run of a
// program and in a later one.
TEST(PlannedChangeUndo, RestoresTheFileToTheByte)
{
    for (unsigned seed = 0; seed < 30; ++seed) {
        test::RandomRules random(seed);
        const test::StoreSandbox box;
        {
            test::DocumentAtWork writer(box);
            rules::ChangeSet rules;
            for (std::size_t count = 1 + random.below(10); count > 0; --count) {
                rules::PolicyRuleFields fields = random.policy();
                fields.policyClass = static_cast<std::int32_t>(random.below(2));
                fields.path = "/" + std::to_string(random.below(4));
                fields.processName
                    = random.oneOf<rules::NullableText>({"/old", "/new", "/old via /new", "any via /old"});
                fields.tag = random.oneOf<rules::NullableText>({"", "a", "b"});
                fields.constraint = random.oneOf<rules::NullableText>({"", "T"});
                fields.operations = 1 + static_cast<std::uint32_t>(random.below(3));
                fields.policyType = fields.policyType == 4 ? 0 : fields.policyType;
                fields.flags = 0;
                fields.system = false;
                const rules::PolicyRulePtr rule = test::policyRule(fields);
                rules.added.push_back({rules::RuleRef(rule), valueOf(rules::RuleRef(rule)), {}});
            }
            writer.document->perform(rules, {"Add Rules"});
        }
        const auto file = [&box] { return test::TemporaryFolder::contents(box.locations.userRulesFile()); };
        {
            test::DocumentAtWork reader(box); // the rules read occur once, and are written in stored order
            reader.document->perform({}, {"Write"});
        }
        const std::string before = file();
        auto work = std::make_unique<test::DocumentAtWork>(box);
        test::FakeProgramFacts facts;
        std::vector<rules::RuleRef> some;
        for (const rules::RuleRef& rule : work->store->userRules()) {
            if (random.below(3) > 0)
                some.push_back(rule);
        }
        PlannedChange plan;
        switch (seed % 3) {
        case 0:
            plan = movingOf(*work->store, "/old", "/new", rules::LineEnds::cut);
            break;
        case 1:
            plan = patchingOf(*work->store, some, {.tag = "c", .ruleClass = 1, .constraint = "T"}, facts,
                rules::LineEnds::cut);
            break;
        default:
            plan = removalOf(*work->store, some, rules::LineEnds::cut);
        }
        ASSERT_EQ(plan.refusal, std::nullopt) << seed;
        if (plan.change.isEmpty())
            continue;
        work->document->perform(plan.change, {"Change Rules"});
        const std::string after = file();
        EXPECT_NE(after, before) << seed;
        if (random.below(2) == 0)
            work = std::make_unique<test::DocumentAtWork>(box);
        EXPECT_TRUE(work->document->undo()) << seed;
        EXPECT_EQ(file(), before) << seed;
        EXPECT_TRUE(work->document->redo()) << seed;
        EXPECT_EQ(file(), after) << seed;
    }
}

TEST_F(PlannedChangeTest, CopiesForAnotherProgramAreBoundToItAndTakeNothingAway)
{
    open(ruleLine("/a", "/bin/old", R"( "t" "OLD" "7")")
        + ruleLine("/b", "/bin/old via /bin/sh", R"( "" "" "0")"));
    facts.existing.insert("/bin/new");
    facts.teams["/bin/new"] = "NEW";
    const std::string before = file();
    EXPECT_EQ(carriedOut(copyingOf(*work->store, userRules(), "/bin/new", facts, rules::LineEnds::cut)),
        ruleLine("/a", "/bin/new", R"( "t" "NEW" "0")")
            + ruleLine("/b", "/bin/new via /bin/sh", R"( "" "NEW" "0")") + before);
    EXPECT_TRUE(work->document->undo());
    EXPECT_EQ(file(), before);
}

TEST_F(PlannedChangeTest, CopiesTakeTheNewProgramInThePlaceOfTheOneThatTheyAreAbout)
{
    const struct {
        const char* process;
        const char* copy;
    } cases[] = {{"any", "/p"}, {"any via /bin/sh", "any via /p"}, {"any via Tool", "any via /p"},
        {"any ancestor /bin/sh", "any ancestor /p"}, {"/bin/a (-x)", "/p (-x)"},
        {"/bin/a via any", "/p via any"}};
    for (const auto& c : cases) {
        open(ruleLine("/a", c.process));
        const PlannedChange plan = copyingOf(*work->store, userRules(), "/p", facts, rules::LineEnds::cut);
        ASSERT_EQ(plan.difference.added.size(), 1U) << c.process;
        EXPECT_EQ(
            askValue(plan.difference.added[0], [](const auto& rule) { return rule.processName.view(); }),
            c.copy);
    }
}

TEST_F(PlannedChangeTest, ACopyThatIsThereAlreadyNeedsNothing)
{
    open(ruleLine("/a", "/bin/a") + ruleLine("/a", "/bin/b") + ruleLine("/a", "/bin/c"));
    const PlannedChange plan = copyingOf(*work->store, userRules(), "/bin/b", facts, rules::LineEnds::cut);
    EXPECT_TRUE(plan.change.isEmpty());
    EXPECT_EQ(plan.unchanged, 3U);
}

TEST_F(PlannedChangeTest, ACopyThatTheFileWouldNotHoldIsRefused)
{
    open(ruleLine("/a", "/bin/a"));
    EXPECT_NE(
        copyingOf(*work->store, userRules(), "/bin/\"b", facts, rules::LineEnds::cut).refusal, std::nullopt);
}

TEST_F(PlannedChangeTest, WhatIsAddedKeepsItsTagAndTimeAndStandsOnce)
{
    open(ruleLine("/a"));
    std::vector<rules::RuleValue> values;
    const auto others
        = box.storeOf(ruleLine("/a", "any", R"( "other" "" "5")") + ruleLine("/b", "any", R"( "t" "" "7")"));
    for (const rules::RuleRef& rule : others->userRules())
        values.push_back(valueOf(rule));
    values.push_back(values.back());
    const PlannedChange plan = addingOf(*work->store, values, rules::LineEnds::cut);
    EXPECT_EQ(plan.unchanged, 2U);
    EXPECT_EQ(carriedOut(plan), ruleLine("/a") + ruleLine("/b", "any", R"( "t" "" "7")"));
}

TEST_F(PlannedChangeTest, ARefusalTellsWhetherWholeLinesWouldHelp)
{
    open(ruleLine("/a"));
    EXPECT_TRUE(patch({.tag = "t\u00e4g"}).wantsWholeLines);
    EXPECT_FALSE(patch({.constraint = "a\"b"}).wantsWholeLines);
    EXPECT_FALSE(patch({.constraint = "\u00e4\"b"}).wantsWholeLines);
    EXPECT_FALSE(patch({.tag = "tag"}).wantsWholeLines);
}

} // namespace quorvane::workflow
