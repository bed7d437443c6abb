#include "codesign/Codesign.h"
#include "tests/support/Answers.h"
#include "tests/support/RunningProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace quorvane::codesign {

namespace {

void expectNoCode(std::int32_t pid)
{
    EXPECT_EQ(getCodeRefWithPID(pid), nullptr) << pid;
    EXPECT_EQ(getDynamicCodeSignState(pid), 6) << pid;
    EXPECT_EQ(getDynamicCodeSignStateWithFlags(pid, 0), 6) << pid;
    EXPECT_FALSE(getDynamicCodeSignIdentifier(pid)) << pid;
    EXPECT_FALSE(getDynamicCodeSignTeamIdentifier(pid)) << pid;
    EXPECT_FALSE(getDynamicCodeSignProperty(pid, "platform-identifier")) << pid;
    EXPECT_EQ(getDynamicCodeSignPlatformIdentifier(pid), 0) << pid;
    EXPECT_EQ(getDynamicCodeSignCertInfo(pid), "Self-Signed Certificate") << pid;
}

} // namespace

TEST(Process, OfALinuxProgramIsUnsigned)
{
    EXPECT_EQ(getDynamicCodeSignState(getpid()), 1);
    EXPECT_NE(getCodeRefWithPID(getpid()), nullptr);
    EXPECT_FALSE(getDynamicCodeSignTeamIdentifier(getpid()));
    EXPECT_EQ(getDynamicCodeSignCertInfo(getpid()), "Self-Signed Certificate");
}

TEST(Process, ThatDoesNotRunCannotBeTold)
{
    for (const std::int32_t pid : {0, -1, INT32_MIN, INT32_MAX})
        expectNoCode(pid);
    test::RunningProcess process(std::filesystem::canonical("/bin/sleep"));
    process.end();
    expectNoCode(process.ended());
}

TEST(Process, IsAnsweredByTheFileItRunsAndNotByItsPath)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("sleep");
    std::filesystem::copy_file("/bin/sleep", path);
    const test::RunningProcess process(path);
    ASSERT_EQ(getDynamicCodeSignState(process.pid()), 1);

    std::filesystem::remove(path);
    EXPECT_EQ(getDynamicCodeSignState(process.pid()), 1) << "its path is gone";
    folder.write("sleep", test::makeProgram());
    EXPECT_EQ(getStaticCodeSignState(path), 2);
    EXPECT_EQ(getDynamicCodeSignState(process.pid()), 1) << "its path names a signed program by now";
}

TEST(Codesign, OfAPathThatDoesNotExistAnswersNothing)
{
    const std::string path = "/nonexistent/program";
    EXPECT_EQ(getStaticCodeSignState(path), 6);
    EXPECT_EQ(getStaticStrictCodeSignState(path), 6);
    EXPECT_EQ(getStaticCodeSignStateWithFlags(path, 0), 6);
    EXPECT_FALSE(getStaticCodeSignIdentifier(path));
    EXPECT_FALSE(getStaticCodeSignTeamIdentifier(path));
    EXPECT_FALSE(getStaticCodeSignProperty(path, kSecCodeInfoCertificates));
    EXPECT_EQ(getStaticCodeSignPlatformIdentifier(path), 0U);
    EXPECT_EQ(getStaticCodeSignCertInfo(path), "Self-Signed Certificate");
}

TEST(Codesign, OfAnUnsignedProgramHasNoTeam)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", test::makeUnsignedProgram());
    EXPECT_EQ(getStaticCodeSignState(path), 1);
    EXPECT_EQ(getStaticStrictCodeSignState(path), 1);
    EXPECT_FALSE(getStaticCodeSignTeamIdentifier(path));
    EXPECT_EQ(getStaticCodeSignState("/bin/sh"), 1) << "nor has a Linux program";
}

TEST(Codesign, OfASignedProgramAnswersEveryQuestion)
{
    const test::TemporaryFolder folder;
    test::ProgramPlan plan;
    plan.signature = test::signedPlan();
    plan.signature->directories.front().platform = 14;
    Bytes program = makeProgram(plan);
    const std::string path = folder.write("program", program);

    EXPECT_EQ(getStaticCodeSignState(path), 2);
    EXPECT_EQ(getStaticStrictCodeSignState(path), 2);
    EXPECT_EQ(getStaticCodeSignIdentifier(path), "com.example.tool");
    EXPECT_EQ(getStaticCodeSignTeamIdentifier(path), "TEAM123456");
    EXPECT_EQ(getStaticCodeSignPlatformIdentifier(path), 14U);
    EXPECT_EQ(getStaticCodeSignCertInfo(path), "Self-Signed Certificate")
        << "the test root is not the platform's";

    EXPECT_EQ(std::get<std::int32_t>(getStaticCodeSignProperty(path, platformIdentifierKey).value()), 14);

    program[5000] ^= 1U;
    folder.write("program", program);
    EXPECT_EQ(getStaticCodeSignState(path), 2);
    EXPECT_EQ(getStaticStrictCodeSignState(path), 3);
    EXPECT_EQ(getStaticCodeSignStateWithFlags(path, 0x4), 3) << "pages without the strict check";
}

} // namespace quorvane::codesign
