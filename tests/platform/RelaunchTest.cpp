#include "platform/Relaunch.h"

#include "platform/FileDescriptor.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace quorvane::platform {

namespace {

// A program that reports, through a pipe, how it was started.
class Starter {
public:
    Starter() { EXPECT_EQ(mkfifo(folder.path("report").c_str(), 0600), 0); }

    std::string makeProgram(const std::string& name) const
    {
        std::string program = folder.write(name,
            "#!/bin/sh\n"
            "{ echo \"arguments $#\"; echo \"mark $QUORVANE_TEST_MARK\"; echo \"folder $(pwd -P)\"\n"
            "echo \"pid $$\"; sed 's/.*) /stat /' /proc/$$/stat\n"
            // Read by the shell itself: while starting another program it blocks signals.
            "while IFS= read -r line; do case $line in SigBlk*) echo \"$line\";; esac; done < "
            "/proc/$$/status\n"
            "for descriptor in /proc/$$/fd/*; do echo \"open $(readlink $descriptor)\"; done\n"
            "} > '"
                + folder.path("report") + "'\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return program;
    }

    // Waits for the program's report.
    std::string report() const { return test::TemporaryFolder::contents(folder.path("report")); }

    const test::TemporaryFolder folder;
};

bool hasLine(const std::string& report, const std::string& line)
{
    return ("\n" + report).find("\n" + line + "\n") != std::string::npos;
}

// The rest of the first line that begins with `start`.
std::string lineAfter(const std::string& report, const std::string& start)
{
    std::istringstream lines(report);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(start))
            return line.substr(start.size());
    }
    return "no such line";
}

} // namespace

TEST(RelaunchCommand, WaitsAndStartsTheProgram)
{
    EXPECT_EQ(relaunchCommand(3.0F, "/usr/bin/tool"), "sleep 3.000000; exec \"/usr/bin/tool\"");
    EXPECT_EQ(relaunchCommand(0.25F, "/a b"), "sleep 0.250000; exec \"/a b\"");
    EXPECT_EQ(relaunchCommand(1234567.0F, "/a"), "sleep 1234567.000000; exec \"/a\"");
}

TEST(RelaunchCommand, EscapesWhatTheShellWouldInterpret)
{
    EXPECT_EQ(relaunchCommand(0, "/$HOME/`x`/\"y\"/\\z/'q'/!é"),
        "sleep 0.000000; exec \"/\\$HOME/\\`x\\`/\\\"y\\\"/\\\\z/'q'/!é\"");
}

TEST(ProgramPathFromLink, LosesTheMarkOfAFileThatIsGone)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(programPathFromLink("/usr/bin/tool"), "/usr/bin/tool");
    EXPECT_EQ(programPathFromLink("/nonexistent/tool (deleted)"), "/nonexistent/tool");
    const std::string named = folder.write("tool (deleted)", "");
    EXPECT_EQ(programPathFromLink(named), named) << "it is called so";
    EXPECT_EQ(programPathFromLink(" (deleted)"), "");
}

TEST(StartAfterDelay, StartsAProgramWhateverItsPathHolds)
{
    for (const char* name : {"plain", "with blank", "$HOME", "`false`", "\"quoted\"", "back\\slash", "it's",
             "a;b&c|d>e", "new\nline", "ünï日本", "$(false) \\\" \\$ \\", "-n"}) {
        const Starter starter;
        ASSERT_TRUE(startAfterDelay(0.01F, starter.makeProgram(name))) << name;
        EXPECT_TRUE(hasLine(starter.report(), "arguments 0")) << name;
    }
}

TEST(StartAfterDelay, TheProgramLeadsAProcessSessionOfItsOwn)
{
    const Starter starter;
    ASSERT_TRUE(startAfterDelay(0, starter.makeProgram("program")));
    const std::string report = starter.report();
    std::istringstream status(lineAfter(report, "stat "));
    std::string state;
    std::string parent;
    std::string group;
    std::string session;
    status >> state >> parent >> group >> session;
    EXPECT_EQ(session, lineAfter(report, "pid ")) << report;
    EXPECT_NE(session, std::to_string(getsid(0)));
    EXPECT_NE(parent, std::to_string(getpid()));
}

TEST(StartAfterDelay, LeavesNoChildToWaitFor)
{
    const Starter starter;
    ASSERT_TRUE(startAfterDelay(0, starter.makeProgram("program")));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    starter.report();
}

TEST(StartAfterDelay, TheProgramHasTheEnvironmentAndTheFolder)
{
    const test::EnvironmentVariable mark("QUORVANE_TEST_MARK", "a 'b' $c");
    const Starter starter;
    ASSERT_TRUE(startAfterDelay(0, starter.makeProgram("program")));
    const std::string report = starter.report();
    EXPECT_TRUE(hasLine(report, "mark a 'b' $c")) << report;
    EXPECT_TRUE(hasLine(report, "folder " + std::filesystem::current_path().string())) << report;
}

TEST(StartAfterDelay, TheProgramInheritsNoDescriptorAndNoBlockedSignal)
{
    const Starter starter;
    const std::string secret = starter.folder.write("secret", "");
    const FileDescriptor open(::open(secret.c_str(), O_RDONLY)); // NOLINT(android-cloexec-open)
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    const bool started = startAfterDelay(0, starter.makeProgram("program"));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(started);
    const std::string report = starter.report();
    EXPECT_TRUE(open);
    EXPECT_FALSE(hasLine(report, "open " + secret)) << report;
    EXPECT_TRUE(hasLine(report, "SigBlk:\t0000000000000000")) << report;
}

// Run in the process that the next test starts.
TEST(RelaunchedProgram, Reports)
{
    const char* report = getenv("QUORVANE_TEST_REPORT");
    if (report == nullptr)
        GTEST_SKIP() << "this is not the second program";
    std::ofstream(report) << std::filesystem::read_symlink("/proc/self/exe").string();
}

TEST(RelaunchAfterDelay, StartsTheVeryProgramThatRuns)
{
    const Starter starter;
    const test::EnvironmentVariable filter("GTEST_FILTER", "RelaunchedProgram.Reports");
    const test::EnvironmentVariable shards("GTEST_TOTAL_SHARDS", "1");
    const test::EnvironmentVariable shard("GTEST_SHARD_INDEX", "0");
    const test::EnvironmentVariable report("QUORVANE_TEST_REPORT", starter.folder.path("report"));
    ASSERT_TRUE(relaunchAfterDelay(0));
    EXPECT_EQ(starter.report(), std::filesystem::read_symlink("/proc/self/exe").string());
}

} // namespace quorvane::platform
