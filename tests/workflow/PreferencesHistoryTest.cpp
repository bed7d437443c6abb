#include "workflow/PreferencesHistory.h"

#include "history/Journal.h"
#include "platform/FilePermissions.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/FakePrivilegedCommand.h"
#include "tests/support/TestDocument.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::workflow {

namespace {

class PreferencesHistoryTest : public testing::Test {
protected:
    std::string bytes() const { return test::TemporaryFolder::contents(box.locations.preferencesFile()); }
    std::vector<history::JournalVersion> versions() const { return history.openJournal()->versions(); }

    test::StoreSandbox box;
    RunState run;
    test::FakeApplication application;
    test::FakePrivilegedCommand privilegedCommand;
    std::unique_ptr<rules::RuleManager> store = box.emptyStore();
    test::TestDocument document{*store, run};
    PreferencesHistory history{
        box.locations, document, "test", {application, privilegedCommand, run}, test::silentLog()};
};

} // namespace

TEST_F(PreferencesHistoryTest, KeepsWhatIsFoundAndWhatIsSaved)
{
    box.writePreferences(test::preference("a", 1));
    history.keepPresentVersion();
    history.keepPresentVersion(); // it is the newest already
    box.writePreferences(test::preference("a", 2) + test::preference("b", 1));
    history.keepSaved("Save Preferences");
    const auto kept = versions();
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_EQ(kept[0].action, "Save Preferences");
    EXPECT_EQ(kept[0].program, "test");
    EXPECT_EQ(kept[0].rules, 2U);
    EXPECT_EQ(kept[0].added, 1U);
    EXPECT_EQ(kept[0].changed, 1U);
    EXPECT_EQ(kept[1].kind, history::VersionKind::foreign);
    EXPECT_EQ(kept[1].added, 1U);
}

TEST_F(PreferencesHistoryTest, RestoresTheVeryBytesForAnAdministratorWhoAuthenticates)
{
    box.writePreferences("<!-- by hand -->" + test::preference("a", 1));
    const std::string before = bytes();
    history.keepPresentVersion();
    box.writePreferences(test::preference("a", 2));
    EXPECT_FALSE(history.restore(1));
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_EQ(application.authentications, 1);
    EXPECT_TRUE(privilegedCommand.commands.empty());
    const auto kept = versions();
    ASSERT_EQ(kept.size(), 3U); // including the one in force before
    EXPECT_EQ(kept[0].action, "Restore Version 1");
}

TEST_F(PreferencesHistoryTest, RestoresNothingForAnybodyElse)
{
    box.writePreferences(test::preference("a", 1));
    history.keepPresentVersion();
    box.writePreferences(test::preference("a", 2));
    const std::string present = bytes();
    application.authenticates = false;
    EXPECT_TRUE(history.restore(1));
    application.isAdmin = false;
    EXPECT_TRUE(history.restore(1));
    EXPECT_EQ(
        application.authentications, 1); // a user who is not an administrator is not asked to authenticate
    EXPECT_EQ(bytes(), present);
    EXPECT_EQ(run.g_dirty, 0);
}

TEST_F(PreferencesHistoryTest, ARestoreAsksForThePermissionOfTheRulesFolderAsASaveDoes)
{
    platform::setPermissions(box.locations.sharedFolder(), 0775);
    box.writePreferences("<key>access.user.create</key><true/>");
    history.keepPresentVersion();
    EXPECT_FALSE(history.restore(1));
    ASSERT_EQ(privilegedCommand.commands.size(), 1U);
    EXPECT_NE(privilegedCommand.commands[0].find("/bin/chmod 777"), std::string::npos);
}

TEST_F(PreferencesHistoryTest, TellsWhyAVersionCannotBeRestored)
{
    EXPECT_EQ(history.restore(7), "Version 7 can no longer be read.");
    box.folder.write("Users/Shared/Quorvane/vantreal.Quorvane.preferences.plist", "no list");
    history.keepPresentVersion();
    EXPECT_EQ(history.restore(1), "Version 1 is no property list.");
    EXPECT_EQ(application.adminQuestions, 0);
}

} // namespace quorvane::workflow
