#include "workflow/RulesFolder.h"

#include "platform/FilePermissions.h"
#include "platform/Locations.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace quorvane::workflow {

namespace {

class RulesFolder : public testing::Test {
protected:
    RulesFolder() { std::filesystem::create_directories(m_locations.sharedFolder()); }

    std::uint32_t permissionsAfter(bool mayCreateRules)
    {
        EXPECT_EQ(std::system(rulesFolderCommand(m_locations, mayCreateRules).c_str()), 0);
        return platform::permissionsOf(m_locations.sharedFolder()).value_or(0);
    }

    test::TemporaryFolder m_folder;
    // A quote must not end the shell word of the folder in the command.
    platform::Locations m_locations{m_folder.path("it's; echo \"$HOME\" '"), "nobody"};
    test::CapturedLog m_log;
};

} // namespace

TEST_F(RulesFolder, LetsUsersCreateRulesExactlyWhenOthersMayWriteToIt)
{
    const struct {
        std::uint32_t permissions;
        bool answer;
        const char* line;
    } cases[] = {
        {0777, true, "posix mask for rules folder is 511"},
        {0775, false, "posix mask for rules folder is 509"},
        {0772, true, "posix mask for rules folder is 506"},
        {01777, true, "posix mask for rules folder is 1023"},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(platform::setPermissions(m_locations.sharedFolder(), c.permissions));
        EXPECT_EQ(canCreateRules(m_locations, m_log.log()), c.answer) << c.line;
        EXPECT_EQ(m_log.lines().back(), c.line);
    }
}

TEST_F(RulesFolder, ThatCannotBeReadLetsNobodyCreateRules)
{
    const platform::Locations nowhere(m_folder.path("missing"), "nobody");
    EXPECT_FALSE(canCreateRules(nowhere, m_log.log()));
    EXPECT_EQ(m_log.lines(), std::vector<std::string>{"posix mask for rules folder is 0"});
}

TEST_F(RulesFolder, CommandNamesTheFolderInQuotes)
{
    const platform::Locations everyday("", "nobody");
    EXPECT_EQ(rulesFolderCommand(everyday, true), "/bin/chmod 777 '/Users/Shared/Quorvane'");
    EXPECT_EQ(rulesFolderCommand(everyday, false), "/bin/chmod 775 '/Users/Shared/Quorvane'");
}

TEST_F(RulesFolder, CommandChangesTheFolderWhateverItsRootIsCalled)
{
    EXPECT_EQ(permissionsAfter(true), 0777U);
    EXPECT_EQ(permissionsAfter(false), 0775U);
}

TEST_F(RulesFolder, CommandIsToldAsAScript)
{
    EXPECT_EQ(privilegedScript("/bin/chmod 777 '/x'"),
        "do shell script \"/bin/chmod 777 '/x'\" with administrator privileges");
}

} // namespace quorvane::workflow
