#include "workflow/ProgramSettings.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

ProgramSettings otherSettings()
{
    ProgramSettings settings;
    settings.wholeLines = true;
    settings.history.days = 3;
    settings.history.bytes = 1000;
    return settings;
}

} // namespace

TEST(ProgramSettings, AreTheUsualOnesWithoutAFile)
{
    const test::TemporaryFolder folder;

    const ReadProgramSettings read = readProgramSettings(folder.path("settings.ini"));

    EXPECT_FALSE(read.problem);
    EXPECT_FALSE(read.settings.wholeLines);
    EXPECT_EQ(read.settings.history.days, 7U);
    EXPECT_EQ(read.settings.history.bytes, 1073741824U);
}

TEST(ProgramSettings, AreReadAsTheyWereWritten)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.path("config/quorvane/settings.ini");

    ASSERT_EQ(writeProgramSettings(file, otherSettings()), std::nullopt);
    const ReadProgramSettings read = readProgramSettings(file);

    EXPECT_FALSE(read.problem);
    EXPECT_TRUE(read.settings.wholeLines);
    EXPECT_EQ(read.settings.history.days, 3U);
    EXPECT_EQ(read.settings.history.bytes, 1000U);
    EXPECT_EQ(
        test::TemporaryFolder::contents(file), "[rules]\nwholeLines=true\n\n[history]\ndays=3\nbytes=1000\n");
}

TEST(ProgramSettings, LeaveWhateverElseIsInTheFile)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("settings.ini",
        "; mine\n[history]\n# why\ndays = 5 \nfuture=x\n\n[other]\ndays=9\nwithout anything\n[rules]\n\n; "
        "end");

    ASSERT_EQ(writeProgramSettings(file, otherSettings()), std::nullopt);

    EXPECT_EQ(test::TemporaryFolder::contents(file),
        "; mine\n[history]\n# why\ndays=3\nfuture=x\nbytes=1000\n\n[other]\ndays=9\nwithout anything\n"
        "[rules]\nwholeLines=true\n\n; end\n");
}

TEST(ProgramSettings, AreTheUsualOnesWhereAValueIsBrokenAndTellTheLine)
{
    const struct {
        const char* why;
        const char* text;
        const char* line;
    } cases[] = {
        {"no truth", "[rules]\nwholeLines=yes\n", "line 2 "},
        {"no number", "[history]\ndays=many\n", "line 2 "},
        {"digits and more", "[history]\ndays=7 days\n", "line 2 "},
        {"negative", "[history]\nbytes=-1\n", "line 2 "},
        {"beyond all numbers", "[history]\nbytes=99999999999999999999\n", "line 2 "},
        {"beyond all sense", "[history]\ndays=36501\n", "line 2 "},
        {"empty", "[history]\ndays=\n", "line 2 "},
        {"neither section nor key", "rules\n[half\n", "line 1, 2 "},
    };
    for (const auto& c : cases) {
        const test::TemporaryFolder folder;
        const ReadProgramSettings read = readProgramSettings(folder.write("settings.ini", c.text));
        EXPECT_FALSE(read.settings.wholeLines) << c.why;
        EXPECT_EQ(read.settings.history.days, 7U) << c.why;
        EXPECT_EQ(read.settings.history.bytes, 1073741824U) << c.why;
        ASSERT_TRUE(read.problem) << c.why;
        EXPECT_NE(read.problem->find(c.line), std::string::npos) << c.why << ": " << *read.problem;
    }
}

TEST(ProgramSettings, TakeALaterLineForAnEarlierOneAndKeepGoodValuesBesideBrokenOnes)
{
    const test::TemporaryFolder folder;

    const ReadProgramSettings read = readProgramSettings(folder.write(
        "settings.ini", "\xEF\xBB\xBF[history]\r\ndays=1\r\nbytes=x\r\n[history]\r\ndays=2\r\n"));

    EXPECT_EQ(read.settings.history.days, 2U);
    EXPECT_TRUE(read.problem);
}

TEST(ProgramSettings, AreReadBehindAByteOrderMark)
{
    const test::TemporaryFolder folder;

    const ReadProgramSettings read
        = readProgramSettings(folder.write("settings.ini", "\xEF\xBB\xBF[history]\ndays=2\n"));

    EXPECT_EQ(read.problem, std::nullopt);
    EXPECT_EQ(read.settings.history.days, 2U);
}

TEST(ProgramSettings, AreTheUsualOnesForAFileThatIsNoText)
{
    const test::TemporaryFolder folder;
    const std::string files[] = {folder.write("invalid", "[rules]\nwholeLines=true\n\xFF"),
        folder.write("nul", std::string("[rules]\nwholeLines=true\n\0", 25)),
        folder.write("large", std::string((1U << 20U) + 1, '\n')), folder.path()};
    for (const std::string& file : files) {
        const ReadProgramSettings read = readProgramSettings(file);
        EXPECT_FALSE(read.settings.wholeLines) << file;
        EXPECT_TRUE(read.problem) << file;
    }
}

TEST(ProgramSettings, SetAFileAsideThatIsNoTextBeforeTheyAreWritten)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("settings.ini", "\xFF");

    ASSERT_EQ(writeProgramSettings(file, otherSettings()), std::nullopt);

    EXPECT_EQ(test::TemporaryFolder::contents(file + ".unread"), "\xFF");
    EXPECT_TRUE(readProgramSettings(file).settings.wholeLines);
}

TEST(ProgramSettings, AreForTheirOwnerOnlyAndLeaveNothingBesideThem)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("settings.ini", "");
    ASSERT_EQ(chmod(file.c_str(), 0644), 0);

    ASSERT_EQ(writeProgramSettings(file, otherSettings()), std::nullopt);

    struct stat status { };
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(ProgramSettings, ReplaceWhatALinkLeadsToAndKeepTheLink)
{
    const test::TemporaryFolder folder;
    const std::string target = folder.write("elsewhere/mine.ini", "; mine\n");
    std::filesystem::create_symlink(target, folder.path("settings.ini"));

    ASSERT_EQ(writeProgramSettings(folder.path("settings.ini"), otherSettings()), std::nullopt);

    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("settings.ini")));
    EXPECT_TRUE(readProgramSettings(target).settings.wholeLines);
}

TEST(ProgramSettings, ThatCannotBeWrittenSayWhy)
{
    const test::TemporaryFolder folder;
    const std::string inTheWay = folder.write("file", "");

    EXPECT_TRUE(writeProgramSettings(inTheWay + "/settings.ini", otherSettings()));
    EXPECT_TRUE(writeProgramSettings("", otherSettings()));
    EXPECT_EQ(test::TemporaryFolder::contents(inTheWay), "");
}

TEST(ProgramSettings, StandInTheFolderForConfigurationOrInTheHome)
{
    const test::EnvironmentVariable home("HOME", "/home/of");
    {
        const test::EnvironmentVariable config("XDG_CONFIG_HOME", "/config");
        EXPECT_EQ(defaultSettingsFile(), "/config/quorvane/settings.ini");
    }
    const test::EnvironmentVariable relative("XDG_CONFIG_HOME", "config");
    EXPECT_EQ(defaultSettingsFile(), "/home/of/.config/quorvane/settings.ini") << "a relative one is ignored";
}

} // namespace quorvane::workflow
