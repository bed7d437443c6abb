#include "workflow/RulesInput.h"

#include "platform/FileDescriptor.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "platform/Unicode.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

namespace quorvane::workflow {

namespace {

// Endless input, such as /dev/zero through a pipe, must not exhaust the memory.
constexpr std::size_t mostPipeBytes = std::size_t{1} << 30U;

std::string unreadable(const std::string& name, const std::string& reason)
{
    return "cannot read '" + name + "': " + reason;
}

// Of bytes that are not UTF-8 without NUL.
std::string noText(const std::string& name, std::string_view bytes)
{
    const bool hasNul = bytes.find('\0') != std::string_view::npos;
    return unreadable(name, hasNul ? "it holds a NUL byte" : "it is not valid UTF-8");
}

bool isNullDevice(const struct stat& status)
{
    constexpr unsigned memoryDevices = 1;
    constexpr unsigned null = 3;
    return S_ISCHR(status.st_mode) && status.st_rdev == makedev(memoryDevices, null);
}

// True for an unnamed pipe, which has or had a writer. A named one may never get any.
bool isShellPipe(const std::string& path, const struct stat& status)
{
    struct statfs system { };
    return S_ISFIFO(status.st_mode) && statfs(path.c_str(), &system) == 0 && system.f_type == PIPEFS_MAGIC;
}

std::string kindOf(const struct stat& status)
{
    if (S_ISDIR(status.st_mode))
        return "it is a folder";
    return S_ISFIFO(status.st_mode) ? "it is a named pipe" : "it is no regular file";
}

} // namespace

RulesInput RulesInput::read(const std::string& path, bool nullDeviceIsEmpty)
{
    RulesInput input;
    struct stat status { };
    if (stat(path.c_str(), &status) != 0) {
        input.fail(errno == ENOENT ? "there is no file '" + path + "'"
                                   : unreadable(path, platform::errorText(platform::systemError(errno))));
    } else if (S_ISREG(status.st_mode)) {
        input.readRegular(path);
    } else if (isShellPipe(path, status)) {
        const platform::FileDescriptor pipe(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (pipe)
            input.readPipe(pipe.get(), path);
        else
            input.fail(unreadable(path, platform::errorText(platform::systemError(errno))));
    } else if (!nullDeviceIsEmpty || !isNullDevice(status)) {
        input.fail(unreadable(path, kindOf(status)));
    }
    return input;
}

RulesInput RulesInput::readDescriptor(int descriptor, const std::string& name)
{
    RulesInput input;
    input.readPipe(descriptor, name);
    return input;
}

void RulesInput::fail(const std::string& problem)
{
    m_problem = m_textProblem = problem;
}

void RulesInput::readRegular(const std::string& path)
{
    std::error_code error;
    const std::string resolved = std::filesystem::canonical(path, error).string();
    if (error) {
        fail(unreadable(path, platform::errorText(error)));
        return;
    }
    m_file = rules::RulesFileText::read(resolved);
    if (m_file->errorMessage())
        fail(*m_file->errorMessage());
    else if (m_file->unreadReason())
        m_textProblem = noText(path, m_file->bytes());
}

void RulesInput::readPipe(int descriptor, const std::string& name)
{
    constexpr std::size_t pieceSize = std::size_t{1} << 16U;
    std::error_code error;
    for (std::size_t got = pieceSize; got == pieceSize;) {
        const std::size_t size = m_bytes.size();
        if (size > mostPipeBytes)
            return fail(unreadable(name, "it goes on for more than a gibibyte"));
        m_bytes.resize(size + pieceSize);
        got = platform::readFully(descriptor, m_bytes.data() + size, pieceSize, error);
        m_bytes.resize(size + got);
    }
    if (error)
        return fail(unreadable(name, platform::errorText(error)));
    if (m_bytes.find('\0') != std::string::npos || !platform::isValidUtf8(m_bytes))
        m_textProblem = noText(name, m_bytes);
}

} // namespace quorvane::workflow
