#include "workflow/RulesFileProbe.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <dirent.h>
#include <sys/stat.h>

namespace quorvane {

namespace {

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

} // namespace

TEST(RulesFileProbe, AFileThatCanBeOpenedIsNothingToTell)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("rules", "");
    const std::size_t before = openDescriptors();
    EXPECT_FALSE(rulesFileNotice(file));
    EXPECT_EQ(openDescriptors(), before) << "it is closed again";
}

TEST(RulesFileProbe, AMissingFileIsNothingToTell)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(rulesFileNotice(folder.path("rules")));
    EXPECT_FALSE(rulesFileNotice(folder.path("no folder/rules")));
}

TEST(RulesFileProbe, ASymbolicLinkCannotBeOpened)
{
    const TemporaryFolder folder;
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
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.path("nowhere"), folder.path("rules"));
    EXPECT_FALSE(rulesFileNotice(folder.path("rules")));
}

TEST(RulesFileProbe, AFileThatItsPermissionsForbidCannotBeOpened)
{
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const std::string file = folder.write("rules", "");
    std::filesystem::permissions(file, std::filesystem::perms::none);

    const std::string answer = answerOfChild([&] {
        if (!becomeOrdinaryUser())
            return std::string("still root");
        return rulesFileNotice(file) ? std::string("notice") : std::string("none");
    });

    EXPECT_EQ(answer, "notice");
}

TEST(RulesFileProbe, APipeBlocksNobody)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("rules").c_str(), 0600), 0);
    EXPECT_FALSE(rulesFileNotice(folder.path("rules")));
}

} // namespace quorvane
