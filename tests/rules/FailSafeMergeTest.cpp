#include "rules/RuleManager.h"

#include "platform/PathComponents.h"
#include "rules/RuleCodes.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

struct Row {
    std::string policyClass;
    std::string type;
    std::string path;
    std::string process;
    std::string operations;
    std::int64_t sequence = 0;

    bool equalButPath(const Row& other) const
    {
        return policyClass == other.policyClass && type == other.type && process == other.process
            && operations == other.operations;
    }
    std::string text() const
    {
        return policyClass + " " + type + " " + path + " " + process + " " + operations + " "
            + std::to_string(sequence);
    }
};

std::string folderOf(const std::string& path)
{
    return platform::deletingLastPathComponent(path) + "/";
}

// The simplest implementation, by scanning a group. Adds `rule` unless an existing one represents it.
void addByPlainWalk(std::vector<Row>& group, Row rule, bool failSafe)
{
    const std::string folder = folderOf(rule.path);
    bool found = false;
    for (Row& existing : group) {
        if (failSafe && !found && !rule.path.starts_with(":")) {
            if (existing.equalButPath(rule))
                found = true;
            if (folderOf(existing.path) == folder && existing.path != folder && existing.path != rule.path) {
                existing.path = folder;
                rule.path = folder;
                found = true;
            }
        }
        if (existing.equalButPath(rule) && existing.path == rule.path)
            found = true;
    }
    if (!found)
        group.push_back(rule);
}

const char* choose(std::mt19937& random, const std::vector<const char*>& from)
{
    return from[random() % from.size()];
}

Row randomRow(std::mt19937& random)
{
    return {choose(random, {"allow", "deny", "deny", "err"}), choose(random, {"prefix", "path"}),
        choose(random,
            {"/a/x", "/a/y", "/a/z", "/a/", "/a", "/b", "/b/x", "/b/y", "/b//x", "/b/x/", "/", "//", "x", "y",
                "x/y", ":NVRAM/x", ":NVRAM/y", ":x", ":", "any", "/a/x/u", "/a/x/v"}),
        choose(random, {"/bin/p", "/bin/q"}), choose(random, {"r", "w", "rw"})};
}

std::string lineOfRow(const Row& row)
{
    return row.policyClass + " " + row.type + " " + row.path + " " + row.process + " " + row.operations
        + "\n";
}

// The stored policy rules as rows of text, by group.
Lines rowTexts(RuleManager& store)
{
    Lines texts;
    for (const PolicyRulePtr& rule : store.policyRules()) {
        texts.push_back(Row{std::string(policyClassDescription(rule->policyClass())),
            std::string(policyTypeDescription(rule->policyType())), std::string(rule->path().view()),
            std::string(rule->processName().view()),
            operationsDescription(static_cast<int>(rule->operations())), rule->sequence()}
                            .text());
    }
    return texts;
}

// Reads a text both by the store and by plain scans.
void expectLikePlainWalk(const std::vector<std::vector<Row>>& files, bool failSafe)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    std::map<std::string, std::vector<Row>> groups;
    std::int64_t sequence = 0;
    std::string all;
    for (const std::vector<Row>& rows : files) {
        std::string text;
        for (Row row : rows) {
            text += lineOfRow(row);
            row.sequence = sequence++;
            addByPlainWalk(groups[row.process], row, failSafe);
        }
        all += text + "--\n";
        const std::string name = failSafe ? sandbox.locations.failSafeFile() : sandbox.folder.path("a.rc");
        sandbox.folder.write(name.substr(sandbox.folder.path().size() + 1), text);
        ASSERT_TRUE(store->addFileContents(name, false));
    }
    store->rebuildRulesCache();
    Lines expected;
    for (const auto& [process, group] : groups) {
        for (const Row& row : group)
            expected.push_back(row.text());
    }
    ASSERT_EQ(rowTexts(*store), expected) << all;
}

void compareManyFiles(bool failSafe, unsigned seed)
{
    std::mt19937 random(seed);
    for (int round = 0; round < 400 && !testing::Test::HasFatalFailure(); ++round) {
        std::vector<std::vector<Row>> files(1 + random() % 2);
        for (auto& rows : files) {
            for (std::size_t left = random() % 40; left > 0; --left)
                rows.push_back(randomRow(random));
        }
        expectLikePlainWalk(files, failSafe);
    }
}

Lines mergedLines(const std::string& text)
{
    const test::StoreSandbox sandbox;
    sandbox.folder.write("Users/Shared/Quorvane/failsafe.rc", text);
    const auto store = RuleManager::initWithContentsOfFile(
        sandbox.locations.failSafeFile(), false, sandbox.locations, test::silentLog());
    return rowTexts(*store);
}

} // namespace

TEST(FailSafeMerge, RulesOnFilesOfOneFolderBecomeOneOnTheFolder)
{
    const struct {
        const char* why;
        const char* text;
        Lines rules;
    } cases[] = {
        {"also when one allows and the other denies", "allow path /d/a /bin/p r\ndeny prefix /d/b /bin/p w\n",
            {"allow path /d/ /bin/p r 0"}},
        {"a third one is dropped for one that differs in its path only",
            "allow path /d/a /bin/p r\nallow path /d/b /bin/p r\nallow path /d/c /bin/p r\n",
            {"allow path /d/ /bin/p r 0"}},
        {"a third one of another class stands for itself: the folder is no file of itself",
            "allow path /d/a /bin/p r\ndeny path /d/b /bin/p r\ndeny path /d/c /bin/p r\n",
            {"allow path /d/ /bin/p r 0", "deny path /d/c /bin/p r 2"}},
        {"a rule that differs in its path only is dropped, wherever it points",
            "allow path /d/a /bin/p r\nallow path /e/b /bin/p r\n", {"allow path /d/a /bin/p r 0"}},
        {"other folders and other fields stay apart", "allow path /d/a /bin/p r\ndeny path /e/b /bin/p r\n",
            {"allow path /d/a /bin/p r 0", "deny path /e/b /bin/p r 1"}},
        {"other applications stay apart", "allow path /d/a /bin/p r\nallow path /d/b /bin/q r\n",
            {"allow path /d/a /bin/p r 0", "allow path /d/b /bin/q r 1"}},
        {"one path under two classes is not merged", "allow path /d/a /bin/p r\ndeny path /d/a /bin/p r\n",
            {"allow path /d/a /bin/p r 0", "deny path /d/a /bin/p r 1"}},
        {"resources are left alone", "allow path :NVRAM/a /bin/p r\nallow path :NVRAM/b /bin/p r\n",
            {"allow path :NVRAM/a /bin/p r 0", "allow path :NVRAM/b /bin/p r 1"}},
        {"equal resources are one", "allow path :NVRAM/a /bin/p r\nallow path :NVRAM/a /bin/p r\n",
            {"allow path :NVRAM/a /bin/p r 0"}},
        {"in the root the folder is written with two slashes",
            "allow path /a /bin/p r\ndeny path /b /bin/p r\n", {"allow path // /bin/p r 0"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mergedLines(c.text), c.rules) << c.why;
}

TEST(FailSafeMerge, HappensInTheFailSafeFileOnly)
{
    const test::StoreSandbox sandbox;
    const std::string text = "allow path /d/a /bin/p r\ndeny path /d/b /bin/p w\nallow path /e /bin/p r\n";
    const std::string near[] = {"Users/Shared/Quorvane/failsafe.rc.strict",
        "Users/Shared/Quorvane//failsafe.rc", "other/failsafe.rc", "ann.rc"};
    for (const std::string& name : near) {
        const std::string file = sandbox.folder.write(name, text);
        const auto store
            = RuleManager::initWithContentsOfFile(file, false, sandbox.locations, test::silentLog());
        EXPECT_EQ(store->totalRules(true), 3U) << name;
    }
}

TEST(FailSafeMerge, MergesIntoRulesThatTheStoreAlreadyHas)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /d/a /bin/p r work\n");
    sandbox.folder.write("Users/Shared/Quorvane/failsafe.rc", "deny path /d/b /bin/p w\n");
    store->addFileContents(sandbox.locations.failSafeFile(), false);
    store->rebuildRulesCache();

    ASSERT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(test::policyAt(*store, 0)->path().view(), "/d/");
    EXPECT_EQ(test::policyAt(*store, 0)->tag().view(), "work");
}

TEST(FailSafeMerge, MergedRuleIsFoundUnderItsNewPath)
{
    const test::StoreSandbox sandbox;
    sandbox.folder.write(
        "Users/Shared/Quorvane/failsafe.rc", "allow prefix /d/a /bin/p r\ndeny prefix /d/b /bin/p w\n");
    const auto store = RuleManager::initWithContentsOfFile(
        sandbox.locations.failSafeFile(), false, sandbox.locations, test::silentLog());

    EXPECT_TRUE(
        store->isRedundant(PolicyRule({.path = "/d/other", .processName = "/bin/p", .operations = 1})));
    EXPECT_TRUE(
        store->deletePolicyRule(PolicyRule({.path = "/d/", .processName = "/bin/p", .operations = 1})));
}

TEST(FailSafeMerge, AgreesWithThePlainWalkOnRandomFiles)
{
    compareManyFiles(true, 11);
}

TEST(Duplicates, AgreeWithThePlainWalkOnRandomFiles)
{
    compareManyFiles(false, 12);
}

TEST(FailSafeMerge, ManyRulesOfOnePathInOneGroupAreMergedAtOnce)
{
    const test::StoreSandbox sandbox;
    constexpr std::size_t many = 20000;
    std::string text;
    for (std::size_t rule = 0; rule < many; ++rule)
        text += "allow path \"/folder/file\" \"any ancestor /bin/a via /bin/" + std::to_string(rule)
            + "\" r \"\" \"TEAM\"\n";
    text += "deny path \"/folder/other\" \"any ancestor /bin/a\" w\n";
    sandbox.folder.write(sandbox.locations.failSafeFile().substr(sandbox.folder.path().size() + 1), text);
    const auto store = RuleManager::initWithContentsOfFile(
        sandbox.locations.failSafeFile(), false, sandbox.locations, test::silentLog());
    ASSERT_EQ(store->totalRules(true), many);
    EXPECT_EQ(test::policyAt(*store, 0)->path().view(), "/folder/") << "merged with the last one";
    EXPECT_EQ(test::policyAt(*store, many - 1)->path().view(), "/folder/file");
    for (std::size_t row = 0; row < many; row += 1000)
        EXPECT_EQ(store->isRedundant(*test::policyAt(*store, row)), false);
}

} // namespace quorvane::rules
