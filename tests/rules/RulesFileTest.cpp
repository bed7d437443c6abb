#include "rules/RulesFile.h"

#include "platform/FileDescriptor.h"
#include "platform/FileLock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemCalls.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::rules {

namespace {

using std::chrono::milliseconds;

const std::string oneRule = "allow path /a any r\n";
const std::string otherRules = "deny path /b any r\nallow path /c any w\n";
constexpr milliseconds never{0};
constexpr milliseconds ample{60'000}; // longer than any test lasts

class RulesFileTextTest : public testing::Test {
protected:
    platform::FileIdentity present() const
    {
        std::error_code error;
        return platform::FileIdentity::ofPath(path, error).value();
    }
    int readErrorFrom(int firstFailing) const
    {
        const test::SystemCallHook hook(
            test::SystemCall::read, test::failing(EIO, [=](int number) { return number >= firstFailing; }));
        const RulesFileText text = RulesFileText::read(path);
        return text.errorMessage() == "Failed to read() file '" + path + "': Input/output error (5)" ? EIO
                                                                                                     : 0;
    }

    const test::TemporaryFolder folder;
    const std::string path = folder.write("rules", oneRule);
};

int openDescriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<int>(std::distance(begin(all), end(all)));
}

} // namespace

TEST_F(RulesFileTextTest, HasTheBytesAndTheFileThatTheyCameFrom)
{
    const std::string text = oneRule + std::string("\0rest", 5);
    folder.write("rules", text);
    const RulesFileText read = RulesFileText::read(path);

    EXPECT_EQ(read.text(), oneRule);
    EXPECT_EQ(read.bytes(), text);
    EXPECT_EQ(read.identity(), present());
}

TEST_F(RulesFileTextTest, HasTheBytesOfAFileThatIsNoText)
{
    folder.write("rules", "\xFF");
    const RulesFileText read = RulesFileText::read(path);

    EXPECT_TRUE(read.isNothing());
    EXPECT_TRUE(read.unreadReason());
    EXPECT_EQ(read.bytes(), "\xFF");
    EXPECT_EQ(read.identity(), present());
}

TEST_F(RulesFileTextTest, KnowsThatThereIsNoFile)
{
    std::filesystem::remove(path);
    const RulesFileText read = RulesFileText::read(path);

    EXPECT_TRUE(read.isNothing());
    EXPECT_EQ(read.identity(), platform::FileIdentity::missing());
    EXPECT_EQ(read.unreadReason(), std::nullopt);
}

TEST_F(RulesFileTextTest, FailsWhereTheFileCannotBeLookedAt)
{
    std::filesystem::create_symlink(folder.path("loop"), folder.path("loop"));
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const std::string closed = folder.write("closed/rules", oneRule);
    std::filesystem::permissions(folder.path("closed"), std::filesystem::perms::none);
    const auto messageOf = [](const std::string& file) {
        const RulesFileText read = RulesFileText::read(file);
        EXPECT_FALSE(read.isNothing());
        EXPECT_EQ(read.unreadReason(), read.errorMessage());
        EXPECT_EQ(read.identity(), std::nullopt);
        return read.errorMessage().value_or("none");
    };
    const auto expected = [](const std::string& file, const char* reason) {
        return "Failed to open file '" + file + "' for reading: " + reason;
    };

    const std::string below = folder.path("loop/rules");
    EXPECT_EQ(messageOf(below), expected(below, "Too many levels of symbolic links (40)"));
    EXPECT_EQ(messageOf(path + "/below"), expected(path + "/below", "Not a directory (20)"));
    EXPECT_EQ(test::answerOfChild(
                  [&] { return test::becomeOrdinaryUser() ? messageOf(closed) : std::string("still root"); }),
        expected(closed, "Permission denied (13)"));
}

TEST_F(RulesFileTextTest, IsNothingAtOnceForAPipeWithAWriterAndADevice)
{
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const platform::FileDescriptor both(open(pipe.c_str(), O_RDWR));
    ASSERT_EQ(::write(both.get(), "text", 4), 4);

    EXPECT_TRUE(RulesFileText::read(pipe).isNothing());
    EXPECT_TRUE(RulesFileText::read("/dev/zero").isNothing());
    EXPECT_EQ(RulesFileText::read(pipe).unreadReason(), std::nullopt);
}

TEST_F(RulesFileTextTest, WaitsForAWriterThatHoldsTheLockAlsoWhereTheFileIsEmptyYet)
{
    for (const char* before : {"deny path", ""}) {
        folder.write("rules", before);
        platform::FileLock lock = platform::FileLock::take(path, platform::LockMode::exclusive, never);
        std::thread writer([&] {
            folder.write("rules", otherRules);
            lock = platform::FileLock();
        });
        const RulesFileText read = RulesFileText::read(path, ample);
        writer.join();

        EXPECT_EQ(read.text(), otherRules) << "before: '" << before << "'";
    }
}

TEST_F(RulesFileTextTest, IsNothingWithoutAFailureWhenItIsEmptyAndMayNotBeOpened)
{
    folder.write("rules", "");
    std::filesystem::permissions(folder.path(), static_cast<std::filesystem::perms>(0755));
    std::filesystem::permissions(path, std::filesystem::perms::none);
    const std::string answer = test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        const RulesFileText read = RulesFileText::read(path);
        return std::string(read.isNothing() ? "nothing, " : "") + read.errorMessage().value_or("no failure");
    });
    EXPECT_EQ(answer, "nothing, no failure");
}

TEST_F(RulesFileTextTest, IsReadWithoutTheLockWhenThatIsNotHadInTime)
{
    const platform::FileLock lock = platform::FileLock::take(path, platform::LockMode::exclusive, never);

    EXPECT_EQ(RulesFileText::read(path, never).text(), oneRule);
    EXPECT_EQ(RulesFileText::read(path, lock).text(), oneRule) << "its holder need not wait";
}

TEST_F(RulesFileTextTest, LeavesNoLockBehind)
{
    EXPECT_EQ(RulesFileText::read(path).text(), oneRule);
    EXPECT_TRUE(platform::FileLock::take(path, platform::LockMode::exclusive, never).isHeld());
}

TEST_F(RulesFileTextTest, IsReadAgainWhenTheFileChangedMeanwhile)
{
    const test::SystemCallHook hook(test::SystemCall::read, [&](int number) -> std::optional<ssize_t> {
        if (number == 0)
            folder.write("rules", otherRules);
        return std::nullopt;
    });
    const RulesFileText read = RulesFileText::read(path);

    EXPECT_EQ(read.text(), otherRules);
    EXPECT_EQ(read.identity(), present());
}

TEST_F(RulesFileTextTest, IsReadAgainWhenTheFileWasReplacedOrRemovedMeanwhile)
{
    folder.write("new", otherRules);
    {
        const test::SystemCallHook hook(test::SystemCall::read, [&](int number) -> std::optional<ssize_t> {
            if (number == 0)
                std::filesystem::rename(folder.path("new"), path);
            return std::nullopt;
        });
        EXPECT_EQ(RulesFileText::read(path).text(), otherRules);
    }
    const test::SystemCallHook hook(test::SystemCall::read, [&](int) -> std::optional<ssize_t> {
        std::filesystem::remove(path);
        return std::nullopt;
    });
    EXPECT_EQ(RulesFileText::read(path).identity(), platform::FileIdentity::missing());
}

TEST_F(RulesFileTextTest, IsReadAgainWhenTheFileWasCutMeanwhileAndLeavesNothingOpen)
{
    const int before = openDescriptors();
    const test::SystemCallHook hook(test::SystemCall::read, [&](int number) -> std::optional<ssize_t> {
        if (number == 0)
            std::filesystem::resize_file(path, 6);
        return std::nullopt;
    });

    EXPECT_EQ(RulesFileText::read(path).text(), "allow ");
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(RulesFileTextTest, OfAFileThatNeverRestsIsTakenAsItWasLast)
{
    int readings = 0;
    const test::SystemCallHook hook(test::SystemCall::read, [&](int number) -> std::optional<ssize_t> {
        readings = number;
        folder.write("rules", oneRule + std::string(static_cast<std::size_t>(number) + 1, '\n'));
        return std::nullopt;
    });
    const RulesFileText read = RulesFileText::read(path);

    EXPECT_TRUE(read.text().starts_with(oneRule));
    EXPECT_NE(read.identity(), present()) << "so the next look reads it again";
    EXPECT_LT(readings, 10);
}

TEST_F(RulesFileTextTest, IsNotStoppedByASignal)
{
    const test::SystemCallHook hook(
        test::SystemCall::read, test::failing(EINTR, [](int number) { return number < 3; }));
    EXPECT_EQ(RulesFileText::read(path).text(), oneRule);
}

TEST_F(RulesFileTextTest, FailsOnAnErrorAndLeavesTheDescriptorOpenWithoutItsLock)
{
    const int before = openDescriptors();
    EXPECT_EQ(readErrorFrom(0), EIO);
    EXPECT_EQ(openDescriptors(), before + 1) << "deliberate";
    EXPECT_TRUE(platform::FileLock::take(path, platform::LockMode::exclusive, never).isHeld());
}

TEST_F(RulesFileTextTest, ReturnsTheMemoryOfADiscardedPartOnly)
{
    constexpr std::size_t pages = 64;
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::string rules;
    while (rules.size() < pages * pageSize)
        rules += oneRule;
    RulesFileText text = RulesFileText::read(folder.write("long", rules));
    const std::size_t begin = 10 * pageSize + 7;
    const std::size_t end = 40 * pageSize - 3;
    text.discard(text.text().substr(begin, end - begin));

    std::array<unsigned char, pages + 1> areResident{};
    const auto firstPage = reinterpret_cast<std::uintptr_t>(text.bytes().data()) / pageSize * pageSize;
    ASSERT_EQ(mincore(reinterpret_cast<void*>(firstPage), pages * pageSize, areResident.data()), 0);
    const auto resident = std::count_if(
        areResident.begin(), areResident.begin() + pages, [](unsigned char page) { return (page & 1) != 0; });
    EXPECT_LE(resident, pages - 28);
    EXPECT_EQ(text.text().substr(0, begin), rules.substr(0, begin));
    EXPECT_EQ(text.text().substr(end), rules.substr(end));
}

TEST_F(RulesFileTextTest, DiscardsNothingOfAFileWithoutAText)
{
    RulesFileText text = RulesFileText::read(folder.write("latin", "; \xe4\n"));
    ASSERT_TRUE(text.text().empty());
    text.discard(text.text());
    EXPECT_EQ(text.bytes(), "; \xe4\n");
}

TEST_F(RulesFileTextTest, KeepsTheBytesAroundADiscardedPartOfLessThanAPage)
{
    RulesFileText text = RulesFileText::read(path);
    text.discard(text.text().substr(3, 5));
    EXPECT_EQ(text.text(), oneRule);
}

} // namespace quorvane::rules
