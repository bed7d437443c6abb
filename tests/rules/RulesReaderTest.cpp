#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace std::string_literals;

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

constexpr const char* oneOfEach = R"(; my rules

allow prefix "/Users/ann/Documents/" "/Applications/Notes.app/Contents/MacOS/Notes" rwc "work" "" "1478000000"
deny path "/etc/hosts" "/usr/bin/vi" w
watch suffix ".plist" "/usr/bin/defaults" rw "prefs"
set policy.global.paranoid 1
  ; indented
)";

} // namespace

TEST(RulesReader, ReadsAUsersFile)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(oneOfEach);

    ASSERT_EQ(store->totalRules(true), 3U);
    const WatchRulePtr watch = test::watchAt(*store, 0);
    EXPECT_EQ(watch->policyType(), 2);
    EXPECT_EQ(watch->path().view(), ".plist");
    EXPECT_EQ(watch->operations(), 3U);
    EXPECT_EQ(watch->tag().view(), "prefs");
    EXPECT_EQ(watch->sequence(), 2);
    const PolicyRulePtr notes = test::policyAt(*store, 1);
    EXPECT_EQ(notes->policyClass(), 0);
    EXPECT_EQ(notes->policyType(), 0);
    EXPECT_EQ(notes->path().view(), "/Users/ann/Documents/");
    EXPECT_EQ(notes->operations(), 7U);
    EXPECT_EQ(notes->tag().view(), "work");
    EXPECT_EQ(notes->constraint().view(), "");
    EXPECT_EQ(notes->created(), 1478000000U);
    EXPECT_EQ(notes->sequence(), 0);
    const PolicyRulePtr vi = test::policyAt(*store, 2);
    EXPECT_EQ(vi->policyClass(), 1);
    EXPECT_EQ(vi->processName().view(), "/usr/bin/vi");
    EXPECT_EQ(vi->sequence(), 1);
    EXPECT_TRUE(store->filterOptions().empty());
}

TEST(RulesReader, OneLineGivesARuleOrNone)
{
    const struct {
        const char* why;
        std::string line;
        std::vector<std::string> paths;
    } cases[] = {
        {"four tokens are too few", "allow prefix /a any", {}},
        {"five are a rule", "allow prefix /a any r", {"/a"}},
        {"an unknown class is a rule", "permit prefix /a any r", {"/a"}},
        {"a comment", ";allow prefix /a any r", {}},
        {"a blank before the semicolon makes it no comment", " ;allow prefix /a any r", {"/a"}},
        {"a tab-separated line is one token", "allow\tprefix\t/a\tany\tr", {}},
        {"inner blanks stay", R"(allow prefix "/a  b" any r)", {"/a  b"}},
        {"a byte order mark belongs to the first word", "\uFEFFallow prefix /a any r", {"/a"}},
        {"a byte order mark makes a comment a rule", "\uFEFF;allow prefix /a any r", {"/a"}},
        {"set with five tokens is a rule in a user's file", "set prefix /a any r", {"/a"}},
        {"an empty path is a path", R"(allow prefix "" any r)", {""}},
        {"a null-like path is text", "allow prefix (null) any r", {"(null)"}},
        {"text behind a NUL is not read",
            "allow prefix /a any r\nallow prefix /b any r\0x\nallow prefix /c any r"s, {"/a", "/b"}},
        {"a NUL may cut a line short", "allow prefix /a any\0 r"s, {}},
        {"not even invalid bytes behind a NUL", "allow prefix /a any r\n\0\xFF"s, {"/a"}},
        {"a NUL in front leaves nothing", "\0allow prefix /a any r"s, {}},
    };
    const test::StoreSandbox sandbox;
    for (const auto& c : cases) {
        const auto store = sandbox.storeOf(c.line);
        EXPECT_EQ(test::rowPaths(*store), c.paths) << c.why;
        EXPECT_EQ(store->lastErrorMessage(), std::nullopt) << c.why;
    }
}

TEST(RulesReader, AnyOtherFirstWordIsAPolicyRuleOfClassFour)
{
    const test::StoreSandbox sandbox;
    for (const char* word : {"permit", "Allow", "set", "\uFEFFallow", "watcher", "err"}) {
        const auto store = sandbox.storeOf(word + " prefix /a any r"s);
        ASSERT_EQ(store->totalRules(true), 1U) << word;
        EXPECT_EQ(test::policyAt(*store, 0)->policyClass(), 4) << word;
    }
}

TEST(RulesReader, WatchRuleMayHaveAnEmptyProcess)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(R"(watch prefix "/a b" "" r)");

    ASSERT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(test::watchAt(*store, 0)->path().view(), "/a b");
    EXPECT_FALSE(test::watchAt(*store, 0)->processName().isNull());
    EXPECT_EQ(test::watchAt(*store, 0)->processName().view(), "");
    EXPECT_EQ(test::watchAt(*store, 0)->operations(), 1U);
}

TEST(RulesReader, EveryLineEndPartsRules)
{
    const test::StoreSandbox sandbox;
    for (const char* end : {"\n", "\r", "\r\n", "\v", "\f", "\u0085", "\u2028", "\u2029"}) {
        const auto store
            = sandbox.storeOf("watch path /w any r"s + end + ";x" + end + end + "allow path /a any r" + end);
        EXPECT_EQ(test::rowPaths(*store), (Lines{"/w", "/a"}));
        EXPECT_EQ(test::policyAt(*store, 1)->sequence(), 1);
    }
}

TEST(RulesReader, ReadingTheSameFileTwiceAddsNothingButUsesSequenceNumbers)
{
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.write("a.rc", oneOfEach);
    const auto store = sandbox.emptyStore();
    ASSERT_TRUE(store->addFileContents(file, false));
    ASSERT_TRUE(store->addFileContents(file, false));
    ASSERT_TRUE(store->addFileContents(sandbox.folder.write("b.rc", "allow path /new any r"), false));
    store->rebuildRulesCache();

    EXPECT_EQ(test::rowPaths(*store), (Lines{".plist", "/new", "/Users/ann/Documents/", "/etc/hosts"}));
    EXPECT_EQ(test::policyAt(*store, 1)->sequence(), 6);
}

TEST(RulesReader, RowsFollowWithTheNextRebuildOnly)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow path /a any r");
    ASSERT_EQ(store->totalRules(true), 1U);
    store->addFileContents(sandbox.folder.write("b.rc", "allow path /b any r"), false);

    EXPECT_EQ(test::rowPaths(*store), Lines{"/a"});
    store->rebuildRulesCache();
    EXPECT_EQ(test::rowPaths(*store), (Lines{"/a", "/b"}));
}

TEST(RulesReader, SystemFileGivesFlagsAndMarksRules)
{
    const test::StoreSandbox sandbox;
    const std::string text = "allow prefix /a any r us\nwatch prefix /a any r s\n";

    const auto system = sandbox.storeOf(text, true);
    EXPECT_EQ(test::policyAt(*system, 1)->flags(), 3U);
    EXPECT_EQ(test::policyAt(*system, 1)->tag().view(), "");
    EXPECT_TRUE(test::policyAt(*system, 1)->system());
    EXPECT_EQ(test::watchAt(*system, 0)->flags(), 2U);
    EXPECT_TRUE(test::watchAt(*system, 0)->system());
    const auto user = sandbox.storeOf(text, false);
    EXPECT_EQ(test::policyAt(*user, 1)->flags(), 0U);
    EXPECT_EQ(test::policyAt(*user, 1)->tag().view(), "us");
    EXPECT_FALSE(test::policyAt(*user, 1)->system());
    EXPECT_EQ(test::watchAt(*user, 0)->tag().view(), "s");
}

TEST(RulesReader, LogsEveryLineThatItTakes)
{
    const test::StoreSandbox sandbox;
    test::CapturedLog log;
    sandbox.writeUserRules("allow prefix \"/a b\" /bin/ls rwx tag TEAM 5\n"
                           "too short\n"
                           "watch suffix .x \"\" rzw\n"
                           "allow prefix \"/a b\" /bin/ls rwx other TEAM 6\n"
                           "watch suffix .x \"\" wr\n");
    sandbox.writeSystemFile("quorvane.rc", "set some.option -1\nset a.b 7 more\nother path /c any m us\n");

    sandbox.load(log.log());

    const std::string system = sandbox.locations.systemFolder();
    EXPECT_EQ(log.lines(),
        (Lines{
            "policy class 0 type 0 path /a b process /bin/ls operations 19 flags 0 constraint TEAM to "
            "application "
            "directory for 'ls:/bin/ls:(null):TEAM'",
            "watch policy type 2 path .x proc  operations 3 (rzw)",
            "policy class 0 type 0 path /a b process /bin/ls operations 19 flags 0 constraint TEAM to "
            "application "
            "directory for 'ls:/bin/ls:(null):TEAM'",
            "watch policy type 2 path .x proc  operations 3 (wr)",
            "option some.option set to 4294967295",
            "option a.b set to 7",
            "policy class 4 type 1 path /c process any operations 8 flags 3 constraint  to application "
            "directory "
            "for 'Any Process:Any Process:(null):'",
            "failed to load contents of " + system + "user.rc",
            "failed to load contents of " + system + "webcam.rc",
            "failed to load contents of " + system + "startup.rc",
            "failed to load contents of " + system + "exec.rc",
        }));
}

TEST(RulesReader, RulesAreOfTheMomentTheyAreRead)
{
    const test::StoreSandbox sandbox;
    const auto now = static_cast<std::uint64_t>(std::time(nullptr));
    const auto store = sandbox.storeOf("allow path /new any r t c " + std::to_string(now)
        + "\nallow path /old any r t c " + std::to_string(now - 90000) + "\n");

    EXPECT_EQ(test::policyAt(*store, 0)->getRuleState(), 2);
    EXPECT_EQ(test::policyAt(*store, 1)->getRuleState(), 0);
}

} // namespace quorvane::rules
