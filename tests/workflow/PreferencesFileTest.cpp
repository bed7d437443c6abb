#include "workflow/PreferencesFile.h"

#include "platform/FilePermissions.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace quorvane::workflow {

namespace {

const std::string damaged = "<plist><dict><key>access";

platform::PropertyList someSettings()
{
    platform::PropertyList settings;
    settings.setInteger("k", 2);
    return settings;
}

} // namespace

TEST(PreferencesFile, MissingOrUnreadableIsAnEmptyList)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(readPreferences(folder.path("missing")).description(), "{}");
    EXPECT_EQ(readPreferences(folder.write("damaged", damaged)).description(), "{}");
    EXPECT_EQ(readPreferences(folder.path()).description(), "{}");
}

TEST(PreferencesFile, IsReadAsItWasWrittenAndIsOpenToItsGroup)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string file = folder.path("list.plist");

    writePreferences(file, someSettings(), log.log());

    EXPECT_EQ(readPreferences(file).description(), R"({"k" = 2})");
    EXPECT_EQ(platform::permissionsOf(file), 0775U);
    EXPECT_EQ(log.lines(), std::vector<std::string>{R"(writing to file: {"k" = 2})"});
}

TEST(PreferencesFile, ThatCannotBeReadIsKeptBesideTheNewOne)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string large(200000, 'x');
    const std::string file = folder.path("list.plist");

    for (const std::string& unreadable : {damaged, large}) {
        folder.write("list.plist", unreadable);
        writePreferences(file, someSettings(), log.log());
        EXPECT_EQ(readPreferences(file).description(), R"({"k" = 2})");
        EXPECT_EQ(platform::permissionsOf(file), 0775U);
    }

    EXPECT_EQ(test::TemporaryFolder::contents(file + ".unread"), damaged);
    EXPECT_EQ(test::TemporaryFolder::contents(file + ".unread.2"), large);
    EXPECT_EQ(log.lines().front(), "kept unreadable preferences as: " + file + ".unread");
}

TEST(PreferencesFile, ThatCannotBeReadIsKeptBesideARestoredVersion)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string file = folder.write("list.plist", damaged);
    const std::string version = "<plist version=\"1.0\"><dict/></plist>";

    EXPECT_EQ(restorePreferences(file, version, log.log()), std::nullopt);

    EXPECT_EQ(test::TemporaryFolder::contents(file), version);
    EXPECT_EQ(test::TemporaryFolder::contents(file + ".unread"), damaged);
    EXPECT_EQ(platform::permissionsOf(file), 0775U);
}

TEST(PreferencesFile, ThatCannotBeReadAndCannotBeKeptStaysAsItWas)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string file = folder.write("list.plist", damaged);
    folder.write("list.plist.unread", "");
    for (int number = 2; number <= 99; ++number) // every name that it could be renamed to
        folder.write("list.plist.unread." + std::to_string(number), "");

    const auto failure = writePreferences(file, someSettings(), log.log());

    EXPECT_EQ(failure, "what it holds cannot be read, and not be kept under another name");
    EXPECT_EQ(test::TemporaryFolder::contents(file), damaged);
    EXPECT_EQ(
        log.lines(), std::vector<std::string>{"failed to keep unreadable preferences, not writing: " + file});
}

TEST(PreferencesFile, ThatIsEmptyIsReplacedWithoutACopy)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string file = folder.write("list.plist", "");
    writePreferences(file, someSettings(), log.log());
    EXPECT_EQ(readPreferences(file).description(), R"({"k" = 2})");
    EXPECT_FALSE(std::filesystem::exists(file + ".unread"));
}

TEST(PreferencesFile, ThatCannotBeWrittenIsLoggedAndTheReasonAnswered)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string file = folder.path("missing/list.plist");

    EXPECT_EQ(writePreferences(file, someSettings(), log.log()), "No such file or directory");

    EXPECT_EQ(log.lines(),
        (std::vector<std::string>{R"(writing to file: {"k" = 2})", "failed to write preferences: " + file,
            "failed to set the permissions of: " + file}));
}

TEST(PreferencesFile, ThatDoesNotFitTheDiskIsAFailureWithItsReason)
{
    const std::string reason = test::answerOfChild([] {
        const test::TemporaryFolder folder;
        test::CapturedLog log;
        platform::PropertyList settings = someSettings();
        settings.setInteger(std::string(2000, 'k'), 1);
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{1000, 1000};
        setrlimit(RLIMIT_FSIZE, &small);
        return writePreferences(folder.path("list.plist"), settings, log.log()).value_or("none");
    });
    EXPECT_EQ(reason, "File too large");
}

TEST(PreferencesFile, ThatAnotherAdministratorOwnsCannotBeSavedAndThatIsKnownBefore)
{
    const test::TemporaryFolder folder;
    platform::setPermissions(folder.path(), 0755);
    const std::string file = folder.write("list.plist", someSettings().fileBytes().value());
    platform::setPermissions(file, 0775);
    const auto answers = [](const std::string& path) {
        return test::answerOfChild([&path] {
            if (!test::becomeOrdinaryUser())
                return std::string("not prepared");
            test::CapturedLog log;
            const std::string before = whyPreferencesCannotBeSaved(path).value_or("none");
            return before + ", " + writePreferences(path, someSettings(), log.log()).value_or("none");
        });
    };
    if (geteuid() != 0)
        GTEST_SKIP() << "needs files of somebody else";
    EXPECT_EQ(answers(file), "Permission denied, Permission denied");
    EXPECT_EQ(answers(folder.path("new.plist")), "Permission denied, Permission denied");
    platform::setPermissions(file, 0777);
    EXPECT_EQ(answers(file), "none, none");
    folder.write("list.plist", damaged);
    EXPECT_EQ(answers(file),
        "what it holds cannot be read, and not be kept under another name, "
        "what it holds cannot be read, and not be kept under another name");
    EXPECT_EQ(test::TemporaryFolder::contents(file), damaged);
}

TEST(PreferencesFile, ThatNothingStandsInTheWayOfCanBeSaved)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(whyPreferencesCannotBeSaved(folder.path("new.plist")), std::nullopt);
    EXPECT_EQ(whyPreferencesCannotBeSaved(folder.write("list.plist", damaged)), std::nullopt);
    EXPECT_EQ(whyPreferencesCannotBeSaved(folder.path("missing/list.plist")), "No such file or directory");
    EXPECT_EQ(whyPreferencesCannotBeSaved(folder.path()), "what stands in its place is no regular file");
}

TEST(PreferencesFile, ThatIsReadAsDefaultsThoughItHoldsSomethingSaysWhy)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(whyPreferencesAreUnread(folder.path("missing.plist")), std::nullopt);
    EXPECT_EQ(whyPreferencesAreUnread(folder.write("list.plist", "")), std::nullopt);
    EXPECT_EQ(whyPreferencesAreUnread(folder.write("list.plist", someSettings().fileBytes().value())),
        std::nullopt);
    EXPECT_EQ(whyPreferencesAreUnread(folder.write("list.plist", damaged)),
        "it is no property list, or a damaged one");
    std::filesystem::resize_file(folder.path("list.plist"), (16U << 20U) + 1);
    EXPECT_EQ(whyPreferencesAreUnread(folder.path("list.plist")), "it is larger than 16 MiB");
}

TEST(PreferencesFile, ThatIsALinkIsNeitherWrittenNorOpenedUpBehindIt)
{
    const test::TemporaryFolder folder;
    test::CapturedLog log;
    const std::string elsewhere = folder.write("elsewhere", someSettings().fileBytes().value());
    ASSERT_TRUE(platform::setPermissions(elsewhere, 0600));
    std::filesystem::create_symlink(elsewhere, folder.path("link"));

    EXPECT_EQ(writePreferences(folder.path("link"), platform::PropertyList(), log.log()),
        "what stands in its place is no regular file");

    EXPECT_EQ(test::TemporaryFolder::contents(elsewhere), someSettings().fileBytes().value());
    EXPECT_EQ(platform::permissionsOf(elsewhere), 0600U);
}

} // namespace quorvane::workflow
