#include "platform/ProgramRun.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace quorvane::platform {

namespace {

ProgramRun runShell(const std::string& script)
{
    return runProgram("sh", {"-c", script});
}

} // namespace

TEST(ProgramRun, AnswersTheExitStatusAndTheStandardOutput)
{
    const ProgramRun run = runShell("echo out; echo seen by a person >&2; exit 7");
    EXPECT_FALSE(run.error);
    EXPECT_EQ(run.status, 7);
    EXPECT_EQ(run.output, "out\n");
}

TEST(ProgramRun, HoldsAnOutputOfAnyLength)
{
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 8192U, 300000U}) {
        const ProgramRun run = runShell("head -c " + std::to_string(size) + " /dev/zero | tr '\\0' x");
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.output, std::string(size, 'x'));
    }
}

TEST(ProgramRun, HandsEveryArgumentOverAsItIs)
{
    const ProgramRun run = runProgram("printf", {"[%s]", "two words", "", "$HOME", "*", "a\nb", "-n"});
    EXPECT_EQ(run.output, "[two words][][$HOME][*][a\nb][-n]");
}

TEST(ProgramRun, EndedByASignalHasNoExitStatus)
{
    const ProgramRun run = runShell("echo before; kill -KILL $$");
    EXPECT_FALSE(run.error);
    EXPECT_LT(run.status, 0);
    EXPECT_EQ(run.output, "before\n");
}

TEST(ProgramRun, OfAProgramThatIsNotThereSaysSo)
{
    const ProgramRun run = runProgram("quorvane-has-no-such-program", {});
    EXPECT_EQ(run.error, std::errc::no_such_file_or_directory);
    EXPECT_LT(run.status, 0);
    EXPECT_EQ(run.output, "");
}

TEST(ProgramRun, LooksItsProgramUpInThePath)
{
    const test::TemporaryFolder folder;
    std::filesystem::permissions(folder.write("quorvane-test-tool", "#!/bin/sh\necho found in $PWD\n"),
        std::filesystem::perms::owner_all);
    const test::EnvironmentVariable path("PATH", folder.path());
    EXPECT_EQ(runProgram("quorvane-test-tool", {}).output,
        "found in " + std::filesystem::current_path().string() + "\n");
}

TEST(ProgramRun, LeavesNoDescriptorBehind)
{
    const auto openDescriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const auto before = openDescriptors();
    runShell("true");
    runProgram("quorvane-has-no-such-program", {});
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace quorvane::platform
