#include "platform/Processes.h"

#include "tests/support/RunningProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::platform {

namespace {

std::string copyOfSleep(const test::TemporaryFolder& folder, const std::string& name)
{
    std::filesystem::create_directories(std::filesystem::path(folder.path(name)).parent_path());
    std::filesystem::copy_file("/bin/sleep", folder.path(name));
    return folder.path(name);
}

} // namespace

TEST(ProgramPathOfProcess, IsThatOfTheFileAlsoWhenItIsGone)
{
    const test::TemporaryFolder folder;
    const std::string program = copyOfSleep(folder, "program");
    const test::RunningProcess process(program);
    EXPECT_EQ(programPathOfProcess(process.pid()), program);

    std::filesystem::remove(program);
    EXPECT_EQ(programPathOfProcess(process.pid()), program);

    folder.write("program", "another file by now");
    EXPECT_EQ(programPathOfProcess(process.pid()), program);
}

TEST(ProgramPathOfProcess, LeavesANameAloneThatLooksLikeThatOfAFileThatIsGone)
{
    const test::TemporaryFolder folder;
    const std::string program = copyOfSleep(folder, "program (deleted)");
    const test::RunningProcess process(program);
    EXPECT_EQ(programPathOfProcess(process.pid()), program);

    std::filesystem::remove(program);
    EXPECT_EQ(programPathOfProcess(process.pid()), program);
}

TEST(ProgramPathOfProcess, IsUnknownForNoProcessAndAZombie)
{
    for (const std::int32_t pid : {0, -1, INT32_MIN, INT32_MAX})
        EXPECT_FALSE(programPathOfProcess(pid)) << pid;
    test::RunningProcess process("/bin/sleep", "0");
    while (!process.hasEnded())
        usleep(1000);
    EXPECT_FALSE(programPathOfProcess(process.pid())) << "a zombie has no program";
    process.end();
    EXPECT_FALSE(programPathOfProcess(process.ended()));
}

TEST(StartTimeOfProcess, FollowsTheOrderOfStarting)
{
    const test::RunningProcess process("/bin/sleep");
    const auto own = startTimeOfProcess(getpid());
    const auto childs = startTimeOfProcess(process.pid());
    ASSERT_TRUE(own && childs);
    EXPECT_GT(*own, 0U);
    EXPECT_GE(*childs, *own);
}

TEST(StartTimeOfProcess, IsNotMisledByTheProgramsName)
{
    const test::TemporaryFolder folder;
    const test::RunningProcess plain("/bin/sleep");
    const test::RunningProcess process(copyOfSleep(folder, "a) S 1 2 3"));
    ASSERT_TRUE(startTimeOfProcess(process.pid()));
    EXPECT_GE(startTimeOfProcess(process.pid()), startTimeOfProcess(plain.pid()));
}

TEST(StartTimeOfProcess, IsUnknownForNoProcess)
{
    for (const std::int32_t pid : {0, -1, INT32_MIN, INT32_MAX})
        EXPECT_FALSE(startTimeOfProcess(pid)) << pid;
}

} // namespace quorvane::platform
