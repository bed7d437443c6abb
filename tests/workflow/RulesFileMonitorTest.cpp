#include "workflow/RulesFileMonitor.h"

#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"
#include "workflow/RunState.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

// Sets the modification time; of a link, that of the link itself.
void setTime(const std::string& path, time_t seconds, long nanoseconds = 0)
{
    const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

class RulesFileMonitorTest : public testing::Test {
protected:
    bool lookAt(std::optional<std::uint64_t> time) { return monitor.monitorFileModification(time); }

    RunState run;
    test::CapturedLog log;
    RulesFileMonitor monitor{run, log.log()};
};

} // namespace

TEST(ModificationTime, IsCutToWholeSeconds)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("rules", "");
    setTime(file, 1000, 999999999);
    EXPECT_EQ(modificationTime(file), 1000U);
    setTime(file, 1001);
    EXPECT_EQ(modificationTime(file), 1001U);
}

TEST(ModificationTime, OfNothingIsNone)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(modificationTime(folder.path("missing")), std::nullopt);
    EXPECT_EQ(modificationTime(""), std::nullopt);
}

TEST(ModificationTime, OfASymbolicLinkIsItsOwn)
{
    const test::TemporaryFolder folder;
    const std::string target = folder.write("target", "");
    std::filesystem::create_symlink(target, folder.path("link"));
    setTime(target, 1000);
    setTime(folder.path("link"), 2000);
    EXPECT_EQ(modificationTime(folder.path("link")), 2000U);
    std::filesystem::remove(target);
    EXPECT_EQ(modificationTime(folder.path("link")), 2000U);
}

TEST_F(RulesFileMonitorTest, TheFirstTimeSeenNeverReloads)
{
    EXPECT_EQ(monitor.lastModificationTime(), 0U);
    EXPECT_FALSE(lookAt(1000));
    EXPECT_EQ(monitor.lastModificationTime(), 1000U);
    EXPECT_FALSE(lookAt(1000));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(RulesFileMonitorTest, EveryOtherTimeReloadsOnceEvenAnEarlierOne)
{
    lookAt(1000);
    EXPECT_TRUE(lookAt(1001));
    EXPECT_FALSE(lookAt(1001));
    EXPECT_TRUE(lookAt(999));
    EXPECT_EQ(log.lines(),
        (std::vector<std::string>{"reloading data on file modification 1000 <=> 1001",
            "reloading data on file modification 1001 <=> 999"}));
}

TEST_F(RulesFileMonitorTest, AMissingFileChangesNothing)
{
    run.internalWrite = true;
    EXPECT_FALSE(lookAt({}));
    EXPECT_TRUE(run.internalWrite);
    EXPECT_EQ(monitor.lastModificationTime(), 0U);

    run.internalWrite = false;
    lookAt(1000);
    EXPECT_FALSE(lookAt({}));
    EXPECT_EQ(monitor.lastModificationTime(), 1000U);
    EXPECT_TRUE(lookAt(1001)) << "a file that comes back changed is reloaded";
}

TEST_F(RulesFileMonitorTest, AFileMissingAtFirstIsNotReloadedWhenItComes)
{
    lookAt({});
    lookAt({});
    EXPECT_FALSE(lookAt(1000));
    EXPECT_TRUE(lookAt(1001));
}

TEST_F(RulesFileMonitorTest, AWriteOfTheProgramIsAbsorbedAndALaterOneOfOthersReloads)
{
    lookAt(1000);
    run.internalWrite = true;
    EXPECT_FALSE(lookAt(1003));
    EXPECT_TRUE(monitor.hasAbsorbed());
    EXPECT_FALSE(run.internalWrite);
    EXPECT_FALSE(lookAt(1003));
    EXPECT_FALSE(monitor.hasAbsorbed());
    EXPECT_TRUE(lookAt(1006));
    EXPECT_EQ(log.lines(), std::vector<std::string>{"reloading data on file modification 1003 <=> 1006"});
}

TEST_F(RulesFileMonitorTest, DeliberateAnOutsideChangeBesideTheProgramsOwnIsNotReloaded)
{
    lookAt(1000);
    run.internalWrite = true; // set by a reload of the table, which writes nothing
    EXPECT_FALSE(lookAt(1001)) << "it was somebody else who changed the file";
    EXPECT_FALSE(lookAt(1001));
    EXPECT_TRUE(lookAt(1002)) << "until the file changes again";
}

TEST_F(RulesFileMonitorTest, AWriteBeforeTheFirstLookIsAbsorbed)
{
    run.internalWrite = true;
    EXPECT_FALSE(lookAt(1000));
    EXPECT_FALSE(run.internalWrite);
    EXPECT_TRUE(lookAt(1001));
}

} // namespace quorvane::workflow
