#include "workflow/RulesFileProbe.h"

#include "platform/Relaunch.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::workflow {

namespace {

// The open descriptors of `file` in this process.
std::vector<int> descriptorsOf(const std::string& file)
{
    std::vector<int> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // like the one that reads this folder
        if (std::filesystem::read_symlink(entry.path(), gone) == file)
            descriptors.push_back(std::stoi(entry.path().filename()));
    }
    return descriptors;
}

} // namespace

TEST(RulesFileProbe, AFileThatCanBeOpenedIsNothingToTell)
{
    const test::TemporaryFolder folder;
    EXPECT_FALSE(rulesFileNotice(folder.write("rules", "")));
}

// Deliberate, see RulesFileProbe.cpp.
TEST(RulesFileProbe, TheDescriptorOfTheProbeIsLeftOpenAndNoOtherProgramGetsIt)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("rules", "");
    const std::vector<int> before = descriptorsOf(file);
    EXPECT_FALSE(rulesFileNotice(file));
    const std::vector<int> left = descriptorsOf(file);
    ASSERT_EQ(left.size(), before.size() + 1);
    EXPECT_EQ(fcntl(left.front(), F_GETFL) & O_ACCMODE, O_RDONLY);
    EXPECT_NE(fcntl(left.front(), F_GETFD) & FD_CLOEXEC, 0);
    close(left.front());
}

TEST(RulesFileProbe, AFailedProbeLeavesNoDescriptor)
{
    const test::TemporaryFolder folder;
    const std::string target = folder.write("target", "");
    std::filesystem::create_symlink(target, folder.path("rules"));
    EXPECT_TRUE(rulesFileNotice(folder.path("rules")));
    EXPECT_TRUE(descriptorsOf(target).empty());
}

TEST(RulesFileProbe, TheProgramStartsAgainAfterThreeSeconds)
{
    EXPECT_EQ(relaunchDelay, 3.0F);
    EXPECT_TRUE(platform::relaunchCommand(relaunchDelay, "/p").starts_with("sleep 3.000000; "));
}

TEST(RulesFileProbe, AMissingFileIsNothingToTell)
{
    const test::TemporaryFolder folder;
    EXPECT_FALSE(rulesFileNotice(folder.path("rules")));
    EXPECT_FALSE(rulesFileNotice(folder.path("no folder/rules")));
}

TEST(RulesFileProbe, ASymbolicLinkCannotBeOpened)
{
    const test::TemporaryFolder folder;
    std::filesystem::create_symlink(folder.write("target", ""), folder.path("rules"));
    const auto notice = rulesFileNotice(folder.path("rules"));
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->header, "Failed to Open Rules File");
    EXPECT_EQ(notice->message,
        "Quorvane Configuration could not access your rules file. Please click OK to relaunch and try "
        "again.");
}

TEST(RulesFileProbe, ALinkThatLeadsNowhereIsNothingToTell)
{
    const test::TemporaryFolder folder;
    std::filesystem::create_symlink(folder.path("nowhere"), folder.path("rules"));
    EXPECT_FALSE(rulesFileNotice(folder.path("rules")));
}

TEST(RulesFileProbe, AFileThatItsPermissionsForbidCannotBeOpened)
{
    const test::TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const std::string file = folder.write("rules", "");
    std::filesystem::permissions(file, std::filesystem::perms::none);

    const std::string answer = test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        return rulesFileNotice(file) ? std::string("notice") : std::string("none");
    });

    EXPECT_EQ(answer, "notice");
}

TEST(RulesFileProbe, APipeBlocksNobody)
{
    const test::TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("rules").c_str(), 0600), 0);
    EXPECT_FALSE(rulesFileNotice(folder.path("rules")));
}

} // namespace quorvane::workflow
