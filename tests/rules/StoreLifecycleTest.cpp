#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

// Writes every file of a configuration, each with a rule on its own name.
void writeEveryFile(const test::StoreSandbox& sandbox)
{
    sandbox.writeUserRules("allow path ann any r\n");
    for (const char* name : {"quorvane", "paranoid", "user", "webcam", "startup", "exec"})
        sandbox.writeSystemFile(std::string(name) + ".rc", std::string("allow path ") + name + " any r\n");
}

} // namespace

TEST(StoreLifecycle, EmptyStoreHasNothing)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    sandbox.writePreferences("");
    const auto store = sandbox.emptyStore();

    EXPECT_EQ(store->totalRules(true), 0U);
    EXPECT_EQ(store->storedRules(), 0U);
    EXPECT_TRUE(store->filterOptions().empty());
    EXPECT_TRUE(store->policyRules().empty());
    EXPECT_EQ(store->watchRules().size(), 0U);
    EXPECT_TRUE(store->sortedKeys().empty());
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

TEST(StoreLifecycle, ReadsTheUsersFileThenTheSystemFilesInTheirOrder)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    const auto store = sandbox.load();

    EXPECT_EQ(test::rowPaths(*store), (Lines{"ann", "quorvane", "user", "webcam", "startup", "exec"}));
    EXPECT_EQ(test::rowPaths(*store, false), Lines{"ann"});
    for (std::size_t row = 0; row < store->totalRules(true); ++row)
        EXPECT_EQ(test::policyAt(*store, row)->sequence(), static_cast<std::int64_t>(row));
}

TEST(StoreLifecycle, PreferencesSelectTheSystemFiles)
{
    const struct {
        const char* why;
        std::string preferences;
        Lines files;
    } cases[] = {
        {"paranoid 1 replaces the main file", test::preference("policy.global.paranoid", 1),
            {"ann", "paranoid", "user", "webcam", "startup", "exec"}},
        {"paranoid 2 does not", test::preference("policy.global.paranoid", 2),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
        {"nor 0", test::preference("policy.global.paranoid", 0),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
        {"nor -1", test::preference("policy.global.paranoid", -1),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
        {"paranoid true does", "<key>policy.global.paranoid</key><true/>",
            {"ann", "paranoid", "user", "webcam", "startup", "exec"}},
        {"webcam 2 leaves its file out", test::preference("policy.global.webcam", 2),
            {"ann", "quorvane", "user", "startup", "exec"}},
        {"webcam 1 does not", test::preference("policy.global.webcam", 1),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
        {"webcam 0 does not", test::preference("policy.global.webcam", 0),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
        {"webcam 3 does not", test::preference("policy.global.webcam", 3),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
        {"user 2", test::preference("policy.global.user", 2),
            {"ann", "quorvane", "webcam", "startup", "exec"}},
        {"startup 2", test::preference("policy.global.startup", 2),
            {"ann", "quorvane", "user", "webcam", "exec"}},
        {"exec 2", test::preference("policy.global.exec", 2),
            {"ann", "quorvane", "user", "webcam", "startup"}},
        {"attach selects nothing", test::preference("policy.global.attach", 2),
            {"ann", "quorvane", "user", "webcam", "startup", "exec"}},
    };
    for (const auto& c : cases) {
        const test::StoreSandbox sandbox;
        writeEveryFile(sandbox);
        sandbox.writePreferences(c.preferences);
        EXPECT_EQ(test::rowPaths(*sandbox.load()), c.files) << c.why;
    }
}

TEST(StoreLifecycle, WithoutPreferencesLinesOfTheMainFileDecide)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    sandbox.writeSystemFile("quorvane.rc",
        "set policy.global.exec 2\nset policy.global.user 1\nset policy.global.paranoid 1\n"
        "allow path quorvane any r\n");

    EXPECT_EQ(test::rowPaths(*sandbox.load()), (Lines{"ann", "quorvane", "user", "webcam", "startup"}))
        << "the paranoid file is chosen by the preferences alone";
}

TEST(StoreLifecycle, DamagedPreferencesLoadEveryFile)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    sandbox.folder.write("Users/Shared/Quorvane/vantreal.Quorvane.preferences.plist", "<plist><dict>");
    const auto store = sandbox.load();

    EXPECT_EQ(test::rowPaths(*store), (Lines{"ann", "quorvane", "user", "webcam", "startup", "exec"}));
    EXPECT_TRUE(store->filterOptions().empty());
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

TEST(StoreLifecycle, NothingAtAllIsAStoreToo)
{
    const test::TemporaryFolder folder;
    const auto store = RuleManager::initWithCurrentUserConfiguration(
        platform::Locations(folder.path("not there"), "ann"), test::silentLog());

    EXPECT_EQ(store->totalRules(true), 0U);
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

TEST(StoreLifecycle, FailureOfTheUsersFileIsForgottenWithTheNextFile)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    std::filesystem::remove(sandbox.locations.userRulesFile());
    std::filesystem::create_symlink(
        sandbox.locations.mainSystemRulesFile(), sandbox.locations.userRulesFile());

    const auto store = sandbox.load();
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
    EXPECT_EQ(test::rowPaths(*store, false), Lines());
    store->reloadCurrentUserConfiguration();
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

TEST(StoreLifecycle, FailureOfTheLastFileStays)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    const std::string last = sandbox.locations.systemFolder() + "exec.rc";
    std::filesystem::remove(last);
    std::filesystem::create_symlink(sandbox.locations.mainSystemRulesFile(), last);
    const auto store = sandbox.load();

    ASSERT_TRUE(store->lastErrorMessage());
    EXPECT_TRUE(store->lastErrorMessage()->starts_with("Failed to open file '" + last + "' for reading: "));
    EXPECT_EQ(store->totalRules(true), 5U);
}

TEST(StoreReload, FollowsTheFilesAndDropsWhatWasThere)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    const auto store = sandbox.load();
    store->addPolicyRule(test::policyRule({.path = "unsaved", .processName = "any"}));
    store->addWatchRule(test::watchRule({.path = "unsaved", .processName = "any"}));
    sandbox.writeUserRules("deny path bob any r\nwatch path carl any r\n");
    sandbox.writePreferences(
        test::preference("policy.global.paranoid", 1) + test::preference("policy.global.exec", 2));

    store->reloadCurrentUserConfiguration();

    EXPECT_EQ(test::rowPaths(*store), (Lines{"carl", "bob", "paranoid", "user", "webcam", "startup"}));
    EXPECT_EQ(store->filterOptions().size(), 15U) << "once, unlike after the first loading";
}

TEST(StoreReload, SequenceNumbersGoOnRising)
{
    const test::StoreSandbox sandbox;
    writeEveryFile(sandbox);
    const auto store = sandbox.load();
    ASSERT_EQ(test::policyAt(*store, 5)->sequence(), 5);

    store->reloadCurrentUserConfiguration();
    EXPECT_EQ(test::policyAt(*store, 0)->sequence(), 6);
    store->reloadCurrentUserConfiguration();
    EXPECT_EQ(test::policyAt(*store, 0)->sequence(), 12);
}

TEST(StoreReload, KeepsSortAndFilter)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("allow path /a any r\nallow path /b any r\n");
    const auto store = sandbox.load();
    store->applyFilterWithString("/");
    store->sortIndexUsingDescriptors({{SortKey::path, false}});
    sandbox.writeUserRules("allow path /c any r\nallow path hidden any r\nallow path /d any r\n");

    store->reloadCurrentUserConfiguration();

    EXPECT_EQ(test::rowPaths(*store), (Lines{"/d", "/c"}));
    EXPECT_EQ(store->storedRules(), 3U);
    store->applyFilterWithString("");
    EXPECT_EQ(test::rowPaths(*store), (Lines{"hidden", "/d", "/c"}));
}

TEST(StoreReload, OldGroupsAreGone)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("allow path /a /bin/old r\n");
    const auto store = sandbox.load();
    ASSERT_EQ(store->sortedKeys().size(), 1U);
    sandbox.writeUserRules("allow path /a /bin/new r\n");

    store->reloadCurrentUserConfiguration();

    EXPECT_EQ(store->sortedKeys(), Lines{"new:/bin/new:(null):"});
}

TEST(StoreReload, RowsKeptFromBeforeStayReadable)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("allow path /a any r\n");
    const auto store = sandbox.load();
    const auto before = store->rows();
    std::filesystem::remove(sandbox.locations.userRulesFile());

    store->reloadCurrentUserConfiguration();

    EXPECT_EQ(store->totalRules(true), 0U);
    ASSERT_EQ(before->count(true), 1U);
    EXPECT_EQ(std::get<PolicyRulePtr>(before->at(0, true))->path().view(), "/a");
}

TEST(StoreLifecycle, LocationsOfAnotherRootAreComparedWithIt)
{
    const test::StoreSandbox sandbox;
    const test::StoreSandbox other;
    const std::string file
        = other.folder.write("Library/Application Support/Quorvane/quorvane.rc", "set a 1\n");
    const auto store = RuleManager::initWithContentsOfFile(file, true, sandbox.locations, test::silentLog());

    EXPECT_TRUE(store->filterOptions().empty()) << "it is no main file of this root";
}

TEST(StoreOfText, HoldsTheRulesOfAUsersFileWithThatText)
{
    const test::StoreSandbox box;
    const auto store = RuleManager::initWithText(
        "allow prefix /a any r\nset x 1\nwatch path /w any r\n", "/pipe", box.locations, test::silentLog());
    EXPECT_EQ(store->userRules().size(), 2U);
    EXPECT_EQ(store->totalRules(false), 2U) << "the rows are there at once";
    const std::string nul("allow prefix /a any r\n\0allow prefix /b any r\n", 45);
    EXPECT_EQ(
        RuleManager::initWithText(nul, "/pipe", box.locations, test::silentLog())->userRules().size(), 1U);
    EXPECT_TRUE(
        RuleManager::initWithText("allow prefix /\xff any r\n", "/pipe", box.locations, test::silentLog())
            ->userRules()
            .empty());
}

TEST(StoreOfText, AddsTheRulesOfAnotherTextThatItDoesNotHoldYet)
{
    const test::StoreSandbox box;
    const auto store = box.storeOf("allow prefix /a any r\n");
    std::size_t discarded = 0;
    const std::string_view more = "allow prefix /a any r\nset x 1\nallow prefix /b any r\n";
    EXPECT_TRUE(store->addUserText(more, [&](std::string_view part) { discarded += part.size(); }));
    EXPECT_EQ(store->userRules().size(), 2U);
    EXPECT_EQ(store->getOption("x"), 0U) << "a user's file has no options";
    EXPECT_EQ(discarded, more.size());
    EXPECT_TRUE(store->addUserText("allow prefix /\xff any r\n"));
    EXPECT_TRUE(store->addUserText(std::string_view("allow prefix /c any r\n\0allow prefix /d any r\n", 45)));
    EXPECT_EQ(store->userRules().size(), 3U);
}

TEST(StoreReload, TakesATextInPlaceOfTheUsersFile)
{
    const test::StoreSandbox box;
    box.writeUserRules("allow prefix /cut");
    box.writeSystemFile("quorvane.rc", "allow prefix /s any r\n");
    const auto store = box.load();
    store->reloadCurrentUserConfiguration("allow prefix /a any r\nallow prefix /b any r\n");
    EXPECT_EQ(store->userRules().size(), 2U);
    EXPECT_EQ(store->allRules().size(), 3U);
    store->applyFilterWithString("/b");
    EXPECT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(store->allRules().size(), 3U);
}

} // namespace quorvane::rules
