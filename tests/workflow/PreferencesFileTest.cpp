#include "workflow/PreferencesFile.h"

#include "platform/FilePermissions.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quorvane {

namespace {

const std::string damaged = "<plist><dict><key>access";

PropertyList someSettings()
{
    PropertyList settings;
    settings.setInteger("k", 2);
    return settings;
}

} // namespace

TEST(PreferencesFile, MissingOrUnreadableIsAnEmptyList)
{
    const TemporaryFolder folder;
    EXPECT_EQ(readPreferences(folder.path("missing")).description(), "{}");
    EXPECT_EQ(readPreferences(folder.write("damaged", damaged)).description(), "{}");
    EXPECT_EQ(readPreferences(folder.path()).description(), "{}");
}

TEST(PreferencesFile, IsReadAsItWasWrittenAndIsOpenToItsGroup)
{
    const TemporaryFolder folder;
    CapturedLog log;
    const std::string file = folder.path("list.plist");

    writePreferences(file, someSettings(), log.log());

    EXPECT_EQ(readPreferences(file).description(), R"({"k" = 2})");
    EXPECT_EQ(permissionsOf(file), 0775U);
    EXPECT_EQ(log.lines(), std::vector<std::string>{R"(writing to file: {"k" = 2})"});
}

TEST(PreferencesFile, ThatCannotBeReadIsKeptBesideTheNewOne)
{
    const TemporaryFolder folder;
    CapturedLog log;
    const std::string large(200000, 'x');
    const std::string file = folder.path("list.plist");

    for (const std::string& unreadable : {damaged, large}) {
        folder.write("list.plist", unreadable);
        writePreferences(file, someSettings(), log.log());
        EXPECT_EQ(readPreferences(file).description(), R"({"k" = 2})");
        EXPECT_EQ(permissionsOf(file), 0775U);
    }

    EXPECT_EQ(TemporaryFolder::contents(file + ".unread"), damaged);
    EXPECT_EQ(TemporaryFolder::contents(file + ".unread.2"), large);
    EXPECT_EQ(log.lines().front(), "kept unreadable preferences as: " + file + ".unread");
}

TEST(PreferencesFile, ThatCannotBeReadAndCannotBeKeptStaysAsItWas)
{
    const TemporaryFolder folder;
    CapturedLog log;
    const std::string file = folder.write("list.plist", damaged);
    folder.write("list.plist.unread", "");
    for (int number = 2; number <= 99; ++number) // every name that it could be kept under
        folder.write("list.plist.unread." + std::to_string(number), "");

    writePreferences(file, someSettings(), log.log());

    EXPECT_EQ(TemporaryFolder::contents(file), damaged);
    EXPECT_EQ(
        log.lines(), std::vector<std::string>{"failed to keep unreadable preferences, not writing: " + file});
}

TEST(PreferencesFile, ThatIsEmptyIsReplacedWithoutACopy)
{
    const TemporaryFolder folder;
    CapturedLog log;
    const std::string file = folder.write("list.plist", "");
    writePreferences(file, someSettings(), log.log());
    EXPECT_EQ(readPreferences(file).description(), R"({"k" = 2})");
    EXPECT_FALSE(std::filesystem::exists(file + ".unread"));
}

TEST(PreferencesFile, ThatCannotBeWrittenIsOnlyLogged)
{
    const TemporaryFolder folder;
    CapturedLog log;
    const std::string file = folder.path("missing/list.plist");

    writePreferences(file, someSettings(), log.log());

    EXPECT_EQ(log.lines(),
        (std::vector<std::string>{R"(writing to file: {"k" = 2})", "failed to write preferences: " + file,
            "failed to set the permissions of: " + file}));
}

TEST(PreferencesFile, ThatIsALinkIsNeitherWrittenNorOpenedUpBehindIt)
{
    const TemporaryFolder folder;
    CapturedLog log;
    const std::string elsewhere = folder.write("elsewhere", someSettings().xml());
    ASSERT_TRUE(setPermissions(elsewhere, 0600));
    std::filesystem::create_symlink(elsewhere, folder.path("link"));

    writePreferences(folder.path("link"), PropertyList(), log.log());

    EXPECT_EQ(TemporaryFolder::contents(elsewhere), someSettings().xml());
    EXPECT_EQ(permissionsOf(elsewhere), 0600U);
}

} // namespace quorvane
