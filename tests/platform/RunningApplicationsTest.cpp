#include "platform/RunningApplications.h"

#include "tests/support/RunningProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::platform {

namespace {

using Numbers = std::vector<std::int32_t>;

// Programs with names that no process outside this test has.
class RunningApplicationsTest : public testing::Test {
protected:
    // A copy of a program that waits.
    std::string program(const std::string& path) const
    {
        std::filesystem::create_directories(std::filesystem::path(folder.path(path)).parent_path());
        std::filesystem::copy_file("/bin/sleep", folder.path(path));
        return folder.path(path);
    }
    std::string bundledProgram(const std::string& bundle, const std::string& info) const
    {
        folder.write(bundle + "/Contents/Info.plist", info);
        return program(bundle + "/Contents/MacOS/" + name);
    }
    static std::string infoWith(const std::string& identifier)
    {
        return "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + identifier
            + "</string></dict></plist>";
    }
    Numbers found() const { return applications->withBundleIdentifier(identifier); }

    const test::TemporaryFolder folder;
    const std::string name = "agent" + std::to_string(getpid());
    const std::string identifier = "maker." + name;
    const std::unique_ptr<RunningApplications> applications = makeRunningApplications();
};

} // namespace

TEST_F(RunningApplicationsTest, FindsNothingWhereNothingRuns)
{
    EXPECT_EQ(found(), Numbers{});
}

TEST_F(RunningApplicationsTest, FindsAPlainProgramByItsFileName)
{
    const test::RunningProcess agent(program(name));
    EXPECT_EQ(found(), Numbers{agent.pid()});
    EXPECT_EQ(applications->withBundleIdentifier(name), Numbers{agent.pid()}) << "an identifier of one part";
}

TEST_F(RunningApplicationsTest, FindsAProgramWhoseFileIsGone)
{
    const std::string file = program(name);
    const test::RunningProcess agent(file);
    std::filesystem::remove(file);
    EXPECT_EQ(found(), Numbers{agent.pid()});
}

TEST_F(RunningApplicationsTest, FindsABundledProgramByTheIdentifierOfItsBundle)
{
    const std::string file = bundledProgram("Any.app", infoWith(identifier));
    const test::RunningProcess agent(file);
    EXPECT_EQ(found(), Numbers{agent.pid()});
    std::filesystem::remove(file);
    EXPECT_EQ(found(), Numbers{agent.pid()}) << "the bundle is still there";
}

TEST_F(RunningApplicationsTest, DoesNotTakeABundledProgramByItsFileName)
{
    const test::RunningProcess other(bundledProgram("Other.app", infoWith("other." + name)));
    const test::RunningProcess letterCase(bundledProgram("Case.app", infoWith("Maker." + name)));
    const test::RunningProcess broken(bundledProgram("Broken.app", "no property list"));
    const test::RunningProcess nameless(bundledProgram("Nameless.app", "<plist><dict></dict></plist>"));
    const test::RunningProcess bare(program("Bare.app/Contents/MacOS/" + name));
    EXPECT_EQ(found(), Numbers{});
}

TEST_F(RunningApplicationsTest, AProgramElsewhereInAFolderLikeABundleIsAPlainOne)
{
    folder.write("A.app/Contents/Info.plist", infoWith("other.identifier"));
    const test::RunningProcess deeper(program("A.app/Contents/MacOS/tools/" + name));
    const test::RunningProcess beside(program("A.app/Contents/Helpers/" + name));
    const test::RunningProcess noBundle(program("A/Contents/MacOS/" + name));
    EXPECT_EQ(found().size(), 3U);
}

TEST_F(RunningApplicationsTest, DoesNotTakeWhatOnlyClaimsTheName)
{
    const test::RunningProcess argument("/bin/sleep", "1000", name);
    const test::RunningProcess longer(program(name + "2"));
    const test::RunningProcess looksGone(program(name + " (deleted)"));
    const std::string script = folder.write(name, "#!/bin/sh\nread line < \"$0.pipe\"\n");
    ASSERT_EQ(mkfifo((script + ".pipe").c_str(), 0600), 0);
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    const test::RunningProcess interpreted(script);
    EXPECT_EQ(found(), Numbers{});
}

TEST_F(RunningApplicationsTest, DoesNotTakeAZombie)
{
    const test::RunningProcess agent(program(name), "0");
    while (!agent.hasEnded())
        usleep(1000);
    EXPECT_EQ(found(), Numbers{});
}

TEST_F(RunningApplicationsTest, NeverTakesTheAskingProcessItself)
{
    const std::string own = std::filesystem::read_symlink("/proc/self/exe").filename();
    const Numbers sameProgram = applications->withBundleIdentifier("maker." + own);
    EXPECT_EQ(std::count(sameProgram.begin(), sameProgram.end(), getpid()), 0);
}

TEST_F(RunningApplicationsTest, TellsThemInTheOrderOfTheirStart)
{
    const std::string file = program(name);
    const test::RunningProcess first(file);
    const test::RunningProcess second(bundledProgram("B.app", infoWith(identifier)));
    const test::RunningProcess third(file);
    EXPECT_EQ(found(), (Numbers{first.pid(), second.pid(), third.pid()}));
}

TEST_F(RunningApplicationsTest, ASignalReachesTheApplication)
{
    test::RunningProcess agent(program(name));
    applications->sendSignal(agent.pid(), identifier, SIGHUP);
    EXPECT_EQ(agent.endingSignal(), SIGHUP);
}

TEST_F(RunningApplicationsTest, ASignalNeverReachesAnotherProgram)
{
    test::RunningProcess other("/bin/sleep", "1000", name);
    applications->sendSignal(other.pid(), identifier, SIGHUP);
    // A signal sent to it by mistake would have come first.
    kill(other.pid(), SIGUSR1);
    EXPECT_EQ(other.endingSignal(), SIGUSR1);
}

TEST_F(RunningApplicationsTest, ASignalToWhatIsGoneDoesNothing)
{
    test::RunningProcess agent(program(name));
    agent.end();
    applications->sendSignal(agent.ended(), identifier, SIGHUP);
    for (const std::int32_t number : {0, -1, INT32_MIN, INT32_MAX, getpid()})
        applications->sendSignal(number, identifier, SIGHUP); // would end this test process
    SUCCEED();
}

} // namespace quorvane::platform
