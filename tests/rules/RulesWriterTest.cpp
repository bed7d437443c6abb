#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

PolicyRuleFields simpleRule()
{
    return {
        .path = "/a", .processName = "/bin/p", .tag = "t", .constraint = "c", .operations = 1, .created = 5};
}

// The rules read back after writing these to a file, in stored order.
std::vector<PolicyRuleFields> writtenAndRead(const std::vector<PolicyRuleFields>& rules)
{
    const test::StoreSandbox sandbox;
    std::vector<RuleRef> references;
    for (const PolicyRuleFields& fields : rules)
        references.emplace_back(test::policyRule(fields));
    const std::string file = sandbox.folder.path("out.quorv");
    EXPECT_TRUE(sandbox.emptyStore()->writeToFile(file, references));
    const auto store = RuleManager::initWithContentsOfFile(file, false, sandbox.locations, test::silentLog());
    store->sortIndexUsingDescriptors({{SortKey::sequence}});
    std::vector<PolicyRuleFields> read;
    for (std::size_t row = 0; row < store->totalRules(true); ++row)
        read.push_back(test::policyAt(*store, row)->fields());
    return read;
}

} // namespace

TEST(RulesWriter, WritesUserRulesOnlyWatchRulesFirstThenByApplication)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("; a comment\n"
                           "allow prefix /b /bin/b rwcmx tag TEAM 7\n"
                           "set an.option 1\n"
                           "watch suffix .x any wr \"my tag\"\n"
                           "deny path \"/a b\" /bin/A x\n"
                           "watch path /y \"\" r\n");
    sandbox.writeSystemFile(
        "quorvane.rc", "set policy.global.exec 2\nallow path /s any r us\nwatch path /s any r s\n");
    const auto store = sandbox.load();
    store->sortIndexUsingDescriptors({{SortKey::path, false}});

    ASSERT_TRUE(store->writeToCurrentUserConfiguration());

    EXPECT_EQ(test::TemporaryFolder::contents(sandbox.locations.userRulesFile()),
        "watch suffix \".x\" \"any\" rw \"my tag\"\n"
        "watch path \"/y\" \"\" r \"\"\n"
        "deny path \"/a b\" \"/bin/A\" x \"\" \"\" \"0\"\n"
        "allow prefix \"/b\" \"/bin/b\" rwcmx \"tag\" \"TEAM\" \"7\"\n");
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

TEST(RulesWriter, WritingAgainWhatWasReadChangesNothing)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(
        "allow prefix /b /bin/b rwcmx tag TEAM 7\nwatch suffix .x any wr\ndeny path /a any x\n");
    ASSERT_TRUE(sandbox.load()->writeToCurrentUserConfiguration());
    const std::string first = test::TemporaryFolder::contents(sandbox.locations.userRulesFile());

    ASSERT_TRUE(sandbox.load()->writeToCurrentUserConfiguration());

    EXPECT_EQ(test::TemporaryFolder::contents(sandbox.locations.userRulesFile()), first);
}

TEST(RulesWriter, ChangesNothingInTheStore)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("allow prefix /b any r\nwatch suffix .x any w\nallow prefix /a any r\n");
    const auto store = sandbox.load();
    store->sortIndexUsingDescriptors({{SortKey::path}});
    const auto rows = store->rows();

    store->writeToFile(sandbox.folder.path("out.rc"));

    EXPECT_EQ(store->rows(), rows);
    EXPECT_EQ(test::rowPaths(*store), (Lines{".x", "/a", "/b"}));
    EXPECT_EQ(test::policyAt(*store, 2)->sequence(), 0);
}

TEST(RulesWriter, WithAFilterStillWritesEveryUserRuleAndKeepsTheRows)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r\nallow path /b any r\nwatch path /c any r\n");
    store->applyFilterWithString("/a");
    ASSERT_EQ(test::rowPaths(*store), Lines{"/a"});
    const std::string file = sandbox.folder.path("out.rc");

    ASSERT_TRUE(store->writeToFile(file));

    EXPECT_EQ(test::rowPaths(*store), Lines{"/a"});
    EXPECT_EQ(store->policyRules().size(), 1U);
    EXPECT_EQ(test::rowPaths(
                  *RuleManager::initWithContentsOfFile(file, false, sandbox.locations, test::silentLog())),
        (Lines{"/c", "/a", "/b"}));
    store->rebuildRulesCache();
    EXPECT_EQ(test::rowPaths(*store), Lines{"/a"}) << "the filter is in force again";
}

TEST(RulesWriter, SelectionIsWrittenInItsOrderSystemRulesIncluded)
{
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.path("out.quorv");
    const std::vector<RuleRef> selection{
        test::policyRule({.path = "/2", .processName = "any", .operations = 1, .flags = 3, .system = true}),
        test::watchRule({.path = "/3", .processName = "any", .operations = 2, .flags = 2, .system = true}),
        test::policyRule({.path = "/1", .processName = "any", .operations = 1}),
        test::policyRule({.path = "/1", .processName = "any", .operations = 1}),
    };
    ASSERT_TRUE(sandbox.emptyStore()->writeToFile(file, selection));

    EXPECT_EQ(test::TemporaryFolder::contents(file),
        "allow prefix \"/2\" \"any\" r \"\" \"\" \"0\"\n"
        "watch prefix \"/3\" \"any\" w \"\"\n"
        "allow prefix \"/1\" \"any\" r \"\" \"\" \"0\"\n"
        "allow prefix \"/1\" \"any\" r \"\" \"\" \"0\"\n");
    const auto read = RuleManager::initWithContentsOfFile(file, false, sandbox.locations, test::silentLog());
    ASSERT_EQ(read->totalRules(false), 3U) << "user rules when read back";
    EXPECT_EQ(test::policyAt(*read, 1)->flags(), 0U);
    EXPECT_EQ(test::policyAt(*read, 1)->tag().view(), "");
    EXPECT_EQ(test::watchAt(*read, 0)->flags(), 0U);
}

TEST(RulesWriter, EmptySelectionEmptiesTheFile)
{
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.write("out.quorv", "before\n");

    EXPECT_TRUE(sandbox.emptyStore()->writeToFile(file, {}));

    EXPECT_EQ(test::TemporaryFolder::contents(file), "");
}

TEST(RulesWriter, WithoutOperationsLaterFieldsMoveToTheLeft)
{
    PolicyRuleFields rule = simpleRule();
    rule.operations = 0;
    rule.tag = "mix";

    const auto read = writtenAndRead({rule});

    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].operations, 24U) << "letters of the tag";
    EXPECT_EQ(read[0].tag.view(), "c");
    EXPECT_EQ(read[0].constraint.view(), "5");
    EXPECT_EQ(read[0].created, 0U);
}

TEST(RulesWriter, OnlyTheTagReadsBackWithoutItsQuotes)
{
    PolicyRuleFields quotedTag = simpleRule();
    quotedTag.tag = "my \"own\" tag";
    PolicyRuleFields quotedPath = simpleRule();
    quotedPath.path = "/a\"b";

    const auto read = writtenAndRead({quotedTag, quotedPath});

    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[0].tag.view(), "my own tag");
    EXPECT_EQ(read[0].path.view(), "/a");
    EXPECT_EQ(read[1].path.view(), "/a");
    EXPECT_EQ(read[1].processName.view(), "b");
}

TEST(RulesWriter, UnknownCodesReadBackAsFour)
{
    PolicyRuleFields rule = simpleRule();
    rule.policyClass = 4;
    rule.policyType = 4;
    PolicyRuleFields stranger = simpleRule();
    stranger.policyClass = 9;
    stranger.policyType = -3;
    stranger.path = "/b";

    const auto read = writtenAndRead({rule, stranger});

    ASSERT_EQ(read.size(), 2U);
    for (const PolicyRuleFields& fields : read) {
        EXPECT_EQ(fields.policyClass, 4);
        EXPECT_EQ(fields.policyType, 4);
    }
}

TEST(RulesWriter, CreationTimeKeepsAll64Bits)
{
    const std::vector<std::uint64_t> times{0, 1, 1478000000, 0x7FFFFFFFFFFFFFFFU, 0x8000000000000000U,
        0x8000000000000001U, 0xFFFFFFFFFFFFFFFFU, 0x123456789ABCDEF0U, 0xFEDCBA9876543210U};
    std::vector<PolicyRuleFields> rules;
    for (const std::uint64_t time : times) {
        rules.push_back(simpleRule());
        rules.back().path = "/" + std::to_string(time);
        rules.back().created = time;
    }

    const auto read = writtenAndRead(rules);

    ASSERT_EQ(read.size(), times.size());
    for (std::size_t number = 0; number < times.size(); ++number)
        EXPECT_EQ(read[number].created, times[number]);
}

TEST(RulesWriter, LineBeyondAsciiIsCutAndTheNextJoinsIt)
{
    const test::StoreSandbox sandbox;
    PolicyRuleFields first = simpleRule();
    first.path = "/caf\u00E9";
    PolicyRuleFields second = simpleRule();
    second.path = "/b";
    const std::string file = sandbox.folder.path("out.quorv");
    const auto store = sandbox.emptyStore();

    EXPECT_TRUE(store->writeToFile(file, {test::policyRule(first), test::policyRule(second)}));

    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
    EXPECT_EQ(test::TemporaryFolder::contents(file),
        "allow prefix \"/caf\u00E9\" \"/bin/p\" r \"t\" \"c\" \"5\""
        "allow prefix \"/b\" \"/bin/p\" r \"t\" \"c\" \"5\"\n");
    const auto read = writtenAndRead({first, second});
    ASSERT_EQ(read.size(), 1U) << "the second rule is lost";
    EXPECT_EQ(read[0].path.view(), "/caf\u00E9");
}

TEST(RulesWriter, EachCharacterBeyondAsciiCostsItsOwnBytes)
{
    const struct {
        const char* why;
        const char* tag;
        const char* end;
    } cases[] = {
        {"two bytes, one unit", "\u00E9", "\"c\" \"5\""},
        {"three bytes, one unit", "\u20AC", "\"c\" \"5"},
        {"four bytes, two units", "\U0001F600", "\"c\" \"5"},
        {"two characters", "\u00E9\u20AC", "\"c\" \""},
    };
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.path("out.quorv");
    for (const auto& c : cases) {
        PolicyRuleFields rule = simpleRule();
        rule.tag = c.tag;
        EXPECT_TRUE(sandbox.emptyStore()->writeToFile(file, {test::policyRule(rule)}));
        EXPECT_EQ(test::TemporaryFolder::contents(file),
            "allow prefix \"/a\" \"/bin/p\" r \"" + std::string(c.tag) + "\" " + c.end)
            << c.why;
    }
}

} // namespace quorvane::rules
