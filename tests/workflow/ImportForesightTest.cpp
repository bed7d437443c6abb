#include "workflow/ImportForesight.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/FakeProgramFacts.h"

#include <gtest/gtest.h>

#include <set>

namespace quorvane::workflow {

namespace {

std::string ruleOfShell(const std::string& path, const std::string& process = "/bin/sh")
{
    return "allow prefix \"" + path + "\" \"" + process + "\" r \"\" \"\" \"0\"\n";
}

class ImportForesightTest : public testing::Test {
protected:
    // Examines all rules of a file with that text.
    ImportForesight& foresightOf(const std::string& text, rules::LineEnds lineEnds = rules::LineEnds::cut,
        const rules::RuleManager* joined = nullptr)
    {
        reviewed = box.storeOf(text);
        foresight = std::make_unique<ImportForesight>(*present, *reviewed, joined, lineEnds);
        EXPECT_FALSE(foresight->examine(reviewed->storedRules()));
        return *foresight;
    }
    // The paths of the rules of a kind.
    std::string pathsOf(Foresight kind) const
    {
        std::string paths;
        for (std::size_t row = 0; row < reviewed->totalRules(false); ++row) {
            const rules::RuleRef& rule = reviewed->ruleAtIndex(row, false);
            if (foresight->is(rule, kind))
                paths += visitRule(rule, [](const auto& record) { return std::string(record.path().view()); })
                    + " ";
        }
        return paths;
    }

    test::StoreSandbox box;
    std::unique_ptr<rules::RuleManager> present = box.emptyStore();
    std::unique_ptr<rules::RuleManager> reviewed;
    std::unique_ptr<ImportForesight> foresight;
};

} // namespace

TEST_F(ImportForesightTest, LooksAtSomeAtATimeUntilItHasLookedAtAll)
{
    present->addPolicyRule(
        test::policyRule({.path = "/c", .processName = "/bin/sh", .tag = "t", .operations = 1}));
    reviewed = box.storeOf(ruleOfShell("/a") + ruleOfShell("/b") + ruleOfShell("/c"));
    ImportForesight coming(*present, *reviewed, nullptr, rules::LineEnds::cut);
    EXPECT_TRUE(coming.examine(2));
    EXPECT_EQ(coming.count(Foresight::present), 0U);
    EXPECT_FALSE(coming.examine(2));
    EXPECT_EQ(coming.count(Foresight::present), 1U);
    EXPECT_FALSE(coming.examine(2));
    EXPECT_EQ(coming.count(Foresight::fresh), 2U);
}

TEST_F(ImportForesightTest, TellsNewRulesFromThoseThatAreThere)
{
    present->addPolicyRule(test::policyRule({.path = "/a", .processName = "/bin/sh", .operations = 1}));
    present->addWatchRule(test::watchRule({.path = "/w", .processName = "/bin/sh", .operations = 1}));
    foresightOf(ruleOfShell("/a") + ruleOfShell("/b") + "watch prefix \"/w\" \"/bin/sh\" r\n");
    EXPECT_EQ(pathsOf(Foresight::present), "/w /a ");
    EXPECT_EQ(pathsOf(Foresight::fresh), "/b ");
}

TEST_F(ImportForesightTest, FindsRulesThatOthersOfTheFileOrOfTheUserCover)
{
    present->addPolicyRule(test::policyRule({.path = "/mine/", .processName = "/bin/sh", .operations = 1}));
    const ImportForesight& found = foresightOf(ruleOfShell("/mine/") + ruleOfShell("/mine/x")
        + ruleOfShell("/a/") + ruleOfShell("/a/b") + ruleOfShell("/c"));
    EXPECT_EQ(pathsOf(Foresight::redundant), "/mine/x /a/b ");
    EXPECT_EQ(found.count(Foresight::redundant), 2U);
}

TEST_F(ImportForesightTest, KnowsTheRulesOfJoinedLines)
{
    const auto joined = box.storeOf(ruleOfShell("/b"));
    const ImportForesight& found
        = foresightOf(ruleOfShell("/a") + ruleOfShell("/b"), rules::LineEnds::cut, joined.get());
    EXPECT_EQ(found.count(Foresight::joined), 1U);
    EXPECT_EQ(pathsOf(Foresight::joined), "/b ");
}

TEST_F(ImportForesightTest, CountsThoseThatOnlyWholeLinesWouldKeep)
{
    for (const rules::LineEnds lineEnds : {rules::LineEnds::cut, rules::LineEnds::whole}) {
        reviewed = box.emptyStore();
        for (const char* path : {"/a", "/K\u00e4se", "/quote\"/"})
            reviewed->addPolicyRule(test::policyRule({.path = path, .processName = "any", .operations = 1}));
        ImportForesight coming(*present, *reviewed, nullptr, lineEnds);
        EXPECT_FALSE(coming.examine(10));
        EXPECT_EQ(coming.countOfCut(), lineEnds == rules::LineEnds::cut ? 1U : 0U);
    }
}

TEST_F(ImportForesightTest, LearnsWhichRulesFail)
{
    test::FakeProgramFacts facts;
    facts.existing.insert("/bin/sh");
    ImportForesight& found = foresightOf(ruleOfShell("/a") + ruleOfShell("/b", "/gone/tool"));
    EXPECT_EQ(found.count(Foresight::failing), 0U);
    found.setFailing(
        std::make_shared<RuleSequences>(failingRules(*reviewed->rows(), RulesPlace::of(facts), {})));
    EXPECT_EQ(found.count(Foresight::failing), 1U);
    EXPECT_EQ(pathsOf(Foresight::failing), "/b ");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(failingRules(*reviewed->rows(), RulesPlace::of(facts), stop.get_token()).empty());
}

TEST_F(ImportForesightTest, HasNothingToLookAtInAFileWithoutRules)
{
    EXPECT_EQ(foresightOf("").count(Foresight::fresh), 0U);
}

TEST(ForesightTexts, NameEachKindOnce)
{
    std::set<std::string_view> texts;
    for (std::size_t kind = 0; kind < foresightKinds; ++kind) {
        texts.insert(foresightTitle(static_cast<Foresight>(kind)));
        texts.insert(foresightHelp(static_cast<Foresight>(kind)));
    }
    EXPECT_EQ(texts.size(), 2 * foresightKinds);
}

} // namespace quorvane::workflow
