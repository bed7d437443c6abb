#include "workflow/RulesInput.h"

#include "platform/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::workflow {

namespace {

// The bytes that were read, or why none were.
std::string outcome(const RulesInput& input)
{
    return input.problem() ? "problem: " + *input.problem() : "bytes: " + std::string(input.bytes());
}

// A pipe whose other end another thread fills, as a shell's.
class ShellPipe {
public:
    explicit ShellPipe(std::string bytes)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        m_reading = platform::FileDescriptor(ends[0]);
        m_writer = std::thread([bytes = std::move(bytes), end = ends[1]] {
            const platform::FileDescriptor writing(end);
            for (std::size_t at = 0; at < bytes.size();) {
                const ssize_t wrote = write(writing.get(), bytes.data() + at, bytes.size() - at);
                if (wrote <= 0)
                    break;
                at += static_cast<std::size_t>(wrote);
            }
        });
    }
    ~ShellPipe() { m_writer.join(); }
    ShellPipe(const ShellPipe&) = delete;
    ShellPipe& operator=(const ShellPipe&) = delete;

    int descriptor() const { return m_reading.get(); }
    // The name that a shell hands to a command.
    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor()); }

private:
    platform::FileDescriptor m_reading;
    std::thread m_writer;
};

class RulesInputs : public testing::Test {
protected:
    const test::TemporaryFolder folder;
};

} // namespace

TEST_F(RulesInputs, AreReadFromAFileAndThroughALink)
{
    const std::string file = folder.write("rules", "allow path /a any r\n");
    std::filesystem::create_symlink("rules", folder.path("link"));
    for (const std::string& path : {file, folder.path("link")}) {
        const RulesInput input = RulesInput::read(path);
        EXPECT_EQ(outcome(input), "bytes: allow path /a any r\n");
        EXPECT_FALSE(input.textProblem());
    }
    EXPECT_EQ(outcome(RulesInput::read(folder.write("empty", ""))), "bytes: ");
}

TEST_F(RulesInputs, ThatAreMissingAreAProblemByName)
{
    const std::string path = folder.path("gone");
    const RulesInput input = RulesInput::read(path);
    EXPECT_EQ(outcome(input), "problem: there is no file '" + path + "'");
    EXPECT_EQ(input.textProblem(), input.problem());
    EXPECT_TRUE(RulesInput::read(folder.write("file", "") + "/below").problem());
}

TEST_F(RulesInputs, ThatAreNoFileAreRefusedWithoutWaiting)
{
    EXPECT_EQ(outcome(RulesInput::read(folder.path())),
        "problem: cannot read '" + folder.path() + "': it is a folder");
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(outcome(RulesInput::read(pipe)), "problem: cannot read '" + pipe + "': it is a named pipe");
    for (const char* device : {"/dev/zero", "/dev/full"}) {
        for (const bool nullDeviceIsEmpty : {false, true})
            EXPECT_EQ(outcome(RulesInput::read(device, nullDeviceIsEmpty)),
                std::string("problem: cannot read '") + device + "': it is no regular file");
    }
}

TEST_F(RulesInputs, TakeTheNullDeviceForAnEmptyFileOnRequestOnly)
{
    EXPECT_EQ(outcome(RulesInput::read("/dev/null", true)), "bytes: ");
    EXPECT_EQ(
        outcome(RulesInput::read("/dev/null")), "problem: cannot read '/dev/null': it is no regular file");
}

TEST_F(RulesInputs, AreReadFromAShellsPipeToItsEnd)
{
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 300000U}) {
        const std::string bytes(size, 'x');
        const ShellPipe named(bytes);
        EXPECT_TRUE(outcome(RulesInput::read(named.path())) == "bytes: " + bytes) << size;
        const ShellPipe open(bytes);
        EXPECT_TRUE(outcome(RulesInput::readDescriptor(open.descriptor(), "input")) == "bytes: " + bytes)
            << size;
    }
}

TEST_F(RulesInputs, FromADescriptorThatCannotBeReadAreAProblem)
{
    const platform::FileDescriptor writeOnly(open(folder.path("file").c_str(), O_WRONLY | O_CREAT, 0600));
    EXPECT_EQ(outcome(RulesInput::readDescriptor(writeOnly.get(), "standard input")),
        "problem: cannot read 'standard input': Bad file descriptor (9)");
}

TEST_F(RulesInputs, ThatAreNoTextAreReadAllTheSameAndSaySo)
{
    const struct {
        std::string bytes;
        const char* why;
    } cases[] = {{std::string("a\0b", 3), "it holds a NUL byte"}, {"a\xff", "it is not valid UTF-8"},
        {std::string("\xff\0", 2), "it holds a NUL byte"}};
    for (const auto& c : cases) {
        const std::string path = folder.write("rules", c.bytes);
        const RulesInput file = RulesInput::read(path);
        EXPECT_EQ(outcome(file), "bytes: " + c.bytes);
        EXPECT_EQ(file.textProblem(), "cannot read '" + path + "': " + c.why);
        const ShellPipe pipe(c.bytes);
        const RulesInput piped = RulesInput::readDescriptor(pipe.descriptor(), "input");
        EXPECT_EQ(outcome(piped), "bytes: " + c.bytes);
        EXPECT_EQ(piped.textProblem(), std::string("cannot read 'input': ") + c.why);
    }
}

} // namespace quorvane::workflow
