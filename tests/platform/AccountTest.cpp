#include "platform/Account.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace quorvane::platform {

TEST(Account, LoginNameIsThatOfTheRealUser)
{
    const passwd* entry = getpwuid(getuid());
    const std::string expected = entry == nullptr ? std::to_string(getuid()) : entry->pw_name;

    EXPECT_EQ(loginName(), expected);
}

TEST(Account, LoginNameDoesNotFollowTheEnvironment)
{
    const std::string before = loginName();
    const test::EnvironmentVariable user("USER", "somebody-else");
    const test::EnvironmentVariable logName("LOGNAME", "somebody-else");

    EXPECT_EQ(loginName(), before);
}

TEST(Account, UserWithoutAccountIsNamedByTheNumber)
{
    constexpr uid_t unknown = 3999999123U;
    if (geteuid() != 0 || getpwuid(unknown) != nullptr)
        GTEST_SKIP() << "needs root to become a user without account";

    const std::string name = test::answerOfChild(
        [] { return setuid(unknown) == 0 ? loginName() : "could not become the user"; });

    EXPECT_EQ(name, "3999999123");
}

TEST(Account, HomeDirectoryIsTheVariableWhenItIsSet)
{
    const test::EnvironmentVariable home("HOME", "/somewhere/else");

    EXPECT_EQ(homeDirectory(), "/somewhere/else");
}

TEST(Account, HomeDirectoryIsTheAccountsWithoutTheVariable)
{
    const passwd* entry = getpwuid(getuid());
    const std::string expected = entry == nullptr ? "" : entry->pw_dir;

    const test::EnvironmentVariable empty("HOME", "");
    EXPECT_EQ(homeDirectory(), expected) << "an empty variable counts as none";
    const test::EnvironmentVariable unset("HOME", std::nullopt);
    EXPECT_EQ(homeDirectory(), expected);
}

TEST(Account, BelongsToItsOwnGroup)
{
    const passwd* entry = getpwuid(getuid());
    const group* own = entry == nullptr ? nullptr : getgrgid(entry->pw_gid);
    if (own == nullptr)
        GTEST_SKIP() << "the user or the user's group has no entry";

    EXPECT_TRUE(isMemberOfGroup(own->gr_name));
}

TEST(Account, BelongsToNoGroupThatDoesNotExist)
{
    EXPECT_FALSE(isMemberOfGroup("quorvane-no-such-group"));
    EXPECT_FALSE(isMemberOfGroup(""));
}

TEST(Account, WithoutAccountBelongsToNoGroup)
{
    constexpr uid_t unknown = 3999999123U;
    if (geteuid() != 0 || getpwuid(unknown) != nullptr)
        GTEST_SKIP() << "needs root to become a user without account";

    // The process keeps its groups; only the account database counts.
    const std::string answer = test::answerOfChild([] {
        if (setuid(unknown) != 0)
            return "could not become the user";
        return isMemberOfGroup(getgrgid(getgid())->gr_name) ? "member" : "no member";
    });

    EXPECT_EQ(answer, "no member");
}

TEST(Account, MembershipIsThatOfTheRealUser)
{
    constexpr uid_t nobody = 65534;
    if (geteuid() != 0 || getpwuid(nobody) == nullptr)
        GTEST_SKIP() << "needs root to become another user";

    const std::string answer = test::answerOfChild([] {
        const std::string ofRoot = getgrgid(getpwuid(0)->pw_gid)->gr_name;
        if (setresuid(nobody, 0, 0) != 0)
            return "could not become the user";
        return isMemberOfGroup(ofRoot) ? "member" : "no member";
    });

    EXPECT_EQ(answer, "no member");
}

} // namespace quorvane::platform
