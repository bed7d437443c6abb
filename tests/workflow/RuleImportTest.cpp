#include "workflow/RuleImport.h"

#include "codesign/Digests.h"
#include "rules/RuleLine.h"
#include "tests/rules/RandomRules.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/Answers.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TestDocument.h"
#include "workflow/RunState.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace quorvane::workflow {

namespace {

class RuleImportTest : public testing::Test {
protected:
    RuleImportTest() { facts.existing = {"/opt/tool", "/usr/bin/ssh", "/usr/local/bin/tool"}; }

    void openStore(const std::string& userRules = {})
    {
        sandbox.writeUserRules(userRules);
        import.reset();
        document.reset();
        store = sandbox.load();
        document = std::make_unique<test::TestDocument>(*store, run);
        import = std::make_unique<RuleImport>(*document, RulesPlace::of(facts));
        import->begin("/exchange/Photo Tools,2.quorv");
    }

    static rules::RuleRef policy(rules::PolicyRuleFields fields)
    {
        return test::policyRule(std::move(fields));
    }

    // The record that an import creates for a policy rule.
    rules::PolicyRulePtr imported(rules::PolicyRuleFields fields)
    {
        return std::get<rules::PolicyRulePtr>(import->importRule(policy(std::move(fields))));
    }
    std::string constraintFor(const rules::NullableText& process, const rules::NullableText& constraint = "")
    {
        const auto rule = imported({.path = "/p", .processName = process, .constraint = constraint});
        return std::string(rule->constraint().written());
    }

    // Imports all rules of an exchange file with this text, like a review with every row ticked.
    ImportResult importText(const std::string& text)
    {
        const auto exchange = sandbox.storeOf(text);
        for (std::size_t row = 0; row < exchange->totalRules(false); ++row)
            import->importRule(exchange->ruleAtIndex(row, false));
        return import->didFinishImportingRules();
    }

    std::string userFile() const
    {
        return test::TemporaryFolder::contents(sandbox.locations.userRulesFile());
    }

    const test::StoreSandbox sandbox;
    test::FakeProgramFacts facts;
    RunState run;
    std::unique_ptr<rules::RuleManager> store;
    std::unique_ptr<test::TestDocument> document;
    std::unique_ptr<RuleImport> import;
};

bool isThere(const std::string& path)
{
    return std::filesystem::exists(path);
}

} // namespace

TEST_F(RuleImportTest, NamesItsTagAfterTheFile)
{
    openStore();
    const struct {
        std::string path;
        std::string tag;
    } cases[] = {
        {"/home/ann/Tools.quorv", "Tools"}, {"/x/Photo Tools,2.quorv", "Photo Tools"}, {"a,b,c.quorv", "a"},
        {"plain", "plain"}, {"/x/a.quorv.quorv", "a"}, {"/x/a.quorv.b", "a.b"},
        {"/x/a.quo.quorvrv", "a.quorv"}, // text that results from the removal stays
        {"/x/Tools.QUORV", "Tools.QUORV"}, {"/x/,late.quorv", ""}, {"/x/.quorv", ""},
        {"/x.quorv/Tools.quorv/", "Tools"}, {"/x/rules.rc", "rules.rc"},
        {sandbox.locations.failSafeFile(), ""},
        {sandbox.locations.sharedFolder() + "/failsafe.rc", "failsafe.rc"}, // only the exact path counts
    };
    for (const auto& c : cases) {
        import->begin(c.path);
        EXPECT_EQ(import->currentImportTag(), c.tag) << c.path;
    }
}

TEST_F(RuleImportTest, TagsRulesThatHaveNoneAndKeepsTheOthersTags)
{
    openStore();
    const auto tagOfPolicy = [this](const rules::NullableText& tag) {
        return std::string(imported({.path = "/p", .processName = "any", .tag = tag})->tag().written());
    };
    const auto tagOfWatch = [this](const rules::NullableText& tag) {
        const auto rule
            = import->importRule(test::watchRule({.path = "/w", .processName = "any", .tag = tag}));
        return std::string(std::get<rules::WatchRulePtr>(rule)->tag().written());
    };

    EXPECT_EQ(tagOfPolicy(""), "Photo Tools");
    EXPECT_EQ(tagOfPolicy({}), "Photo Tools");
    EXPECT_EQ(tagOfPolicy("work"), "work");
    EXPECT_EQ(tagOfWatch(""), "Photo Tools");
    EXPECT_EQ(tagOfWatch({}), "Photo Tools");
    EXPECT_EQ(tagOfWatch("work"), "work");
}

TEST_F(RuleImportTest, RulesOfTheFailSafeFileStayUntagged)
{
    openStore();
    import->begin(sandbox.locations.failSafeFile());
    importText("allow path /a any r\nwatch path /w any r\nallow path /b any r kept\n");
    EXPECT_EQ(userFile(),
        "watch path \"/w\" \"any\" r \"\"\nallow path \"/a\" \"any\" r \"\" \"\" \"0\"\n"
        "allow path \"/b\" \"any\" r \"kept\" \"\" \"0\"\n");
}

TEST_F(RuleImportTest, BindsAPolicyRuleToItsProgram)
{
    openStore();
    facts.existing.insert({"/signed", "/platform", "/both", "/blank", "/usr/bin/team"});
    facts.teams
        = {{"/signed", "TEAM123456"}, {"/both", "TEAM123456"}, {"/blank", ""}, {"/usr/bin/team", "T"}};
    facts.platformIdentifiers = {{"/platform", 7}, {"/both", 7}};
    facts.sha256s = {{"/opt/tool", "digest of tool"}, {"/blank", "digest of blank"},
        {"/usr/local/bin/tool", "digest of local tool"}, {"/usr/bin/ssh", "never asked for"}};
    facts.folders = {"/Applications/Mail.app", "/Applications/"};
    const struct {
        const char* why;
        rules::NullableText process;
        std::string constraint;
    } cases[] = {
        {"signed", "/signed", "TEAM123456"},
        {"of the platform, without a team", "/platform", "APPLE_PF_BINARY"},
        {"of the platform, with a team", "/both", "TEAM123456"},
        {"an empty team counts as none", "/blank", "digest of blank"},
        {"unsigned", "/opt/tool", "digest of tool"},
        {"unsigned in a protected place", "/usr/bin/ssh", ""},
        {"signed in a protected place", "/usr/bin/team", "T"},
        {"outside the protected places after all", "/usr/local/bin/tool", "digest of local tool"},
        {"missing", "/gone", ""},
        {"a folder", "/Applications/Mail.app", ""},
        {"a folder, as written", "/Applications/", ""},
        {"started through another", "/opt/tool via /signed", "digest of tool"},
        {"any program started through one", "any via /signed", "TEAM123456"},
        {"any program started through a missing one", "any via /gone", ""},
        {"any program started through any", "any via any", ""},
        {"any program", "any", ""},
        {"any below an ancestor", "any ancestor /signed", ""},
        {"with arguments", "/opt/tool (-x)", "digest of tool"},
        {"no process", "", ""},
        {"no process at all", {}, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(constraintFor(c.process), c.constraint) << c.why;
    EXPECT_EQ(constraintFor("/signed", {}), "TEAM123456")
        << "a missing constraint is as good as an empty one";
}

TEST_F(RuleImportTest, BindsARuleToAProgramOnDisk)
{
    openStore();
    import = std::make_unique<RuleImport>(*document);
    const std::string program = sandbox.folder.write("signed", test::signedProgram());
    const std::string plain = sandbox.folder.write("plain", "#!/bin/sh\n");
    EXPECT_EQ(constraintFor(program), "TEAM123456");
    EXPECT_EQ(constraintFor(plain), codesign::sha256("#!/bin/sh\n"));
    EXPECT_EQ(constraintFor(sandbox.folder.path()), "");
}

TEST_F(RuleImportTest, AConstraintThatIsThereStaysUntouched)
{
    openStore();
    facts.teams = {{"/opt/tool", "TEAM123456"}};
    EXPECT_EQ(constraintFor("/opt/tool", "OTHER"), "OTHER");
    EXPECT_EQ(constraintFor("/gone", "APPLE_PF_BINARY"), "APPLE_PF_BINARY");
    EXPECT_EQ(facts.questions, 0);
}

TEST_F(RuleImportTest, AProgramThatCannotBeReadIsBoundToNothing)
{
    openStore();
    facts.unreadable = {"/opt/tool"};
    facts.sha256s = {{"/opt/tool", "digest of a program that may have a team"}};
    EXPECT_EQ(constraintFor("/opt/tool"), "");
}

TEST_F(RuleImportTest, AProgramWhoseDigestCannotBeReadIsBoundToNothing)
{
    openStore();
    facts.sha256s.erase("/opt/tool");
    EXPECT_EQ(constraintFor("/opt/tool"), "");
}

TEST_F(RuleImportTest, AWatchRuleIsBoundToNothing)
{
    openStore();
    import->importRule(test::watchRule({.path = "/w", .processName = "/opt/tool"}));
    EXPECT_EQ(facts.questions, 0);
}

TEST_F(RuleImportTest, AsksForTheFactsOfAProgramOnceAnImport)
{
    openStore();
    for (int number = 0; number < 1000; ++number)
        imported({.path = "/p" + std::to_string(number), .processName = "/opt/tool"});
    const int once = facts.questions;
    EXPECT_LE(once, 6);

    import->begin("/x/again.quorv");
    imported({.path = "/p", .processName = "/opt/tool"});
    EXPECT_EQ(facts.questions, 2 * once) << "the program may have changed since";
}

TEST_F(RuleImportTest, TheReviewedRuleItselfStaysAsItWas)
{
    openStore();
    const auto rule = test::policyRule({.path = "/p", .processName = "/opt/tool"});
    const auto stored = std::get<rules::PolicyRulePtr>(import->importRule(rule));
    EXPECT_NE(stored, rule);
    EXPECT_EQ(rule->tag().view(), "");
    EXPECT_EQ(rule->constraint().view(), "");
    EXPECT_EQ(store->policyRules(), std::vector{stored});
}

TEST_F(RuleImportTest, KeepsEverythingElseOfARule)
{
    openStore();
    const auto rule = imported({.policyClass = 1,
        .policyType = 2,
        .path = "/p",
        .processName = "any",
        .operations = 19,
        .flags = 1,
        .created = 77,
        .sequence = 5});
    EXPECT_EQ(ruleLine(rule->fields()), "deny suffix \"/p\" \"any\" rwx \"Photo Tools\" \"\" \"77\"\n");
    EXPECT_EQ(rule->flags(), 1U);
    EXPECT_EQ(rule->sequence(), 5);
}

TEST_F(RuleImportTest, RulesThatAreThereAlreadyAreCountedAndNotAdded)
{
    const std::string rules
        = "watch path \"/w\" \"any\" r \"\"\nallow path \"/a\" \"any\" r \"\" \"\" \"0\"\n";
    openStore(rules);
    const ImportResult result = importText(rules);
    EXPECT_EQ(result.notice.message, "Successfully imported 2 rules");
    EXPECT_EQ(import->importedRules(), 2);
    EXPECT_EQ(import->addedRules(), 0);
    EXPECT_EQ(userFile(), rules) << "and none of them takes the file's tag";
}

TEST_F(RuleImportTest, ARuleThatItsConstraintMakesEqualIsADuplicate)
{
    openStore("allow path /a /opt/tool r old TEAM123456\n");
    facts.teams = {{"/opt/tool", "TEAM123456"}};
    importText(
        "allow path /a /opt/tool r\nallow path /b /opt/tool r\nallow path /b /opt/tool r t TEAM123456\n");
    EXPECT_EQ(import->importedRules(), 3);
    EXPECT_EQ(import->addedRules(), 1) << "rules added before in the same import are seen";
    EXPECT_EQ(userFile(),
        "allow path \"/a\" \"/opt/tool\" r \"old\" \"TEAM123456\" \"0\"\n"
        "allow path \"/b\" \"/opt/tool\" r \"Photo Tools\" \"TEAM123456\" \"0\"\n");
}

TEST_F(RuleImportTest, ASystemRuleIsADuplicateToo)
{
    sandbox.writeSystemFile("quorvane.rc", "allow path /a any r\nwatch path /w any r\n");
    openStore();
    importText("allow path /a any r\nwatch path /w any r\n");
    EXPECT_EQ(import->addedRules(), 0);
    EXPECT_EQ(userFile(), "");
}

TEST_F(RuleImportTest, DeliberateAPolicyRuleThatASearchHidesIsAddedOnceMore)
{
    openStore("allow path /a any r\nallow path /seen any r\nwatch path /w any r\n");
    store->applyFilterWithString("SEEN");
    for (const char* path : {"/a", "/seen", "/a"})
        imported({.policyType = 1, .path = path, .processName = "any", .operations = 1});
    import->importRule(
        test::watchRule({.policyType = 1, .path = "/w", .processName = "any", .operations = 1}));

    EXPECT_EQ(import->addedRules(), 2) << "a hidden one is never seen; watch rules are compared with all";
    store->applyFilterWithString("");
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/w", "/a", "/seen", "/a", "/a"}));
}

TEST_F(RuleImportTest, ARuleAddedUnderASearchIsSeenWhenItPasses)
{
    openStore();
    store->applyFilterWithString("photo"); // found in the tag
    imported({.path = "/a", .processName = "any"});
    imported({.path = "/a", .processName = "any"});
    imported({.path = "/b", .processName = "any", .tag = "work"});
    imported({.path = "/b", .processName = "any", .tag = "work"});
    EXPECT_EQ(import->addedRules(), 3);
}

TEST_F(RuleImportTest, NullTextsEqualNothing)
{
    openStore();
    for (int time = 0; time < 2; ++time) {
        imported({.path = {}, .processName = "any"});
        imported({.path = "/p", .processName = {}});
        imported({.path = "/p", .processName = "any", .constraint = {}});
        import->importRule(test::watchRule({.path = {}, .processName = "any"}));
        import->importRule(test::watchRule({.path = "/w", .processName = {}}));
    }
    EXPECT_EQ(import->addedRules(), 10);
}

TEST_F(RuleImportTest, WatchRulesShowOnlyWhenTheImportIsFinished)
{
    openStore("watch path /a any r\n");
    ASSERT_EQ(store->totalRules(true), 1U);
    import->importRule(
        test::watchRule({.policyType = 1, .path = "/b", .processName = "any", .operations = 1}));
    EXPECT_EQ(store->watchRules().size(), 2U);
    EXPECT_EQ(store->totalRules(true), 1U);

    import->didFinishImportingRules();
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/a", "/b"}));
}

TEST_F(RuleImportTest, WritesAndReadsTheUsersFileAndMarksTheRun)
{
    openStore("; a comment\nallow path /a any r t C 9\n");
    const std::int64_t before = test::policyAt(*store, 0)->sequence();
    const ImportResult result = importText("allow path /b any r\n");

    EXPECT_EQ(userFile(),
        "allow path \"/b\" \"any\" r \"Photo Tools\" \"\" \"0\"\n"
        "allow path \"/a\" \"any\" r \"t\" \"C\" \"9\"\n");
    EXPECT_GT(test::policyAt(*store, 0)->sequence(), before) << "the store was read again";
    EXPECT_EQ(result.notice.header, "Import Successful");
    EXPECT_EQ(result.notice.message, "Successfully imported 1 rules");
    EXPECT_TRUE(result.hasImported);
    EXPECT_FALSE(result.writeFailure);
    EXPECT_TRUE(run.internalWrite);
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(RuleImportTest, WithoutAnyRuleTheFileIsWrittenAllTheSame)
{
    openStore("; a comment\nallow path /a any r\n");
    sandbox.folder.write("Users/Shared/Quorvane/failsafe.rc", "allow path /s any r\n");
    const ImportResult result = import->didFinishImportingRules();

    EXPECT_EQ(result.notice.header, "Import Failed");
    EXPECT_EQ(result.notice.message, "Found no rules to import");
    EXPECT_FALSE(result.hasImported);
    EXPECT_EQ(userFile(), "allow path \"/a\" \"any\" r \"\" \"\" \"0\"\n");
    EXPECT_FALSE(isThere(sandbox.locations.failSafeFile()));
    EXPECT_TRUE(run.internalWrite);
    EXPECT_EQ(run.g_dirty, 0);
}

TEST_F(RuleImportTest, DeliberateEveryImportDropsThePendingSuggestions)
{
    openStore();
    sandbox.folder.write("Users/Shared/Quorvane/failsafe.rc", "allow path /s any r\n");
    sandbox.folder.write("Users/Shared/Quorvane/failsafe.rc.strict", "");
    importText("allow path /b any r\n");
    EXPECT_FALSE(isThere(sandbox.locations.failSafeFile()));
    EXPECT_FALSE(isThere(sandbox.locations.failSafeStrictMarker()));
}

TEST_F(RuleImportTest, ANewImportCountsAnew)
{
    openStore();
    imported({.path = "/a", .processName = "any"});
    import->begin("/x/other.quorv");
    EXPECT_EQ(import->importedRules(), 0);
    EXPECT_EQ(import->addedRules(), 0);
    EXPECT_EQ(imported({.path = "/b", .processName = "any"})->tag().view(), "other");
    EXPECT_EQ(import->didFinishImportingRules().notice.message, "Successfully imported 1 rules");
}

TEST_F(RuleImportTest, AFileThatCannotBeWrittenIsToldOfAndNoRuleIsLost)
{
    openStore("allow path /a any r\n");
    sandbox.folder.write("Users/Shared/Quorvane/failsafe.rc", "allow path /s any r\n");
    std::filesystem::remove(sandbox.locations.userRulesFile());
    std::filesystem::create_directory(sandbox.locations.userRulesFile());
    const ImportResult result = importText("allow path /b any r\n");
    EXPECT_TRUE(result.writeFailure.value_or("").starts_with("Failed to open file")) << *result.writeFailure;
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/a", "/b"}));
    EXPECT_TRUE(isThere(sandbox.locations.failSafeFile()));
}

TEST_F(RuleImportTest, KeepsTheSearchAndTheSortOrder)
{
    openStore("allow path /b any r\n");
    store->applyFilterWithString("photo");
    store->sortIndexUsingDescriptors({{rules::SortKey::path, false}});
    importText("allow path /x any r\nallow path /y any r\nallow path /z any r other\n");
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/y", "/x"}));
}

// Every import is compared with plain scans of the lists.
TEST_F(RuleImportTest, AgreesWithPlainWalksOverTheLists)
{
    facts.existing.insert({"/bin/a", "/bin/B", "/bin/c"});
    facts.teams = {{"/bin/a", "TEAM"}, {"/bin/c", "team"}};
    facts.sha256s = {{"/bin/B", "digest"}};
    int duplicates = 0;
    int hidden = 0;
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        test::RandomRules random(seed);
        openStore();
        std::vector<rules::RuleRef> imports;
        for (int step = 0; step < 500; ++step) {
            if (random.below(30) == 0)
                store->applyFilterWithString(random.oneOf<std::string>({"", "USERS", "a", "photo", "work"}));
            if (random.below(30) == 0 && !store->policyRules().empty())
                store->deletePolicyRule(*random.oneOf(store->policyRules()));
            if (imports.empty() || random.below(3) == 0)
                imports.push_back(random.below(4) == 0 ? rules::RuleRef(test::watchRule(random.watch()))
                                                       : policy(random.policy()));
            const auto policies = store->policyRules();
            const auto watches = store->watchRules().slots();
            const std::int32_t before = import->addedRules();
            const rules::RuleRef taken = import->importRule(random.oneOf(imports));
            const rules::PolicyRule* policyTaken = policyRuleIn(taken);
            const bool isThere = policyTaken == nullptr
                ? std::any_of(watches.begin(), watches.end(),
                    [&](const auto& e) {
                        return e->isEqualToWatchRule(*std::get<rules::WatchRulePtr>(taken));
                    })
                : std::any_of(policies.begin(), policies.end(),
                    [&](const auto& e) { return e->isEqualToPolicyRule(*policyTaken); });
            ASSERT_EQ(import->addedRules() - before, isThere ? 0 : 1);
            duplicates += isThere ? 1 : 0;
            hidden += !isThere && policyTaken != nullptr && store->firstEqualRule(*policyTaken)
                    && store->firstEqualRule(*policyTaken).get() != policyTaken
                ? 1
                : 0;
        }
    }
    EXPECT_GT(duplicates, 300);
    EXPECT_GT(hidden, 30);
}

} // namespace quorvane::workflow
