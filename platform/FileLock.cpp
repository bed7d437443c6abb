#include "platform/FileLock.h"

#include "platform/FileIdentity.h"
#include "platform/PathComponents.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace quorvane::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The pauses between tries: short at first, since most holders are done soon.
class Pauses {
public:
    explicit Pauses(milliseconds wait)
        : m_end(Clock::now() + wait)
    {
    }
    // False when the time is up.
    bool pause()
    {
        const auto now = Clock::now();
        if (now >= m_end)
            return false;
        std::this_thread::sleep_until(std::min(m_end, now + m_next));
        m_next = std::min(m_next * 2, longest);
        return true;
    }

private:
    static constexpr milliseconds longest{20};
    const Clock::time_point m_end;
    milliseconds m_next{1};
};

std::error_code tryLock(int descriptor, LockMode mode)
{
    const int operation = (mode == LockMode::shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
    while (flock(descriptor, operation) != 0) {
        if (errno != EINTR)
            return systemError(errno);
    }
    return {};
}

bool isBusy(const std::error_code& error)
{
    return error == std::errc::operation_would_block;
}

} // namespace

bool lockDescriptor(int descriptor, LockMode mode, milliseconds wait, std::error_code& error)
{
    Pauses pauses(wait);
    do
        error = tryLock(descriptor, mode);
    while (isBusy(error) && pauses.pause());
    return !error;
}

FileLock::FileLock(std::string path, LockMode mode)
    : m_path(std::move(path))
    , m_mode(mode)
{
}

FileLock& FileLock::operator=(FileLock&& other) noexcept
{
    if (this != &other) {
        release();
        m_path = std::move(other.m_path);
        m_mode = other.m_mode;
        m_file = std::move(other.m_file);
        m_onFolder = other.m_onFolder;
        m_heldByAnother = other.m_heldByAnother;
        m_error = other.m_error;
        m_problem = std::move(other.m_problem);
    }
    return *this;
}

FileLock::~FileLock()
{
    release();
}

// Unlocks explicitly instead of only closing: a child between fork and exec shares the lock.
void FileLock::release()
{
    if (isHeld())
        flock(m_file.get(), LOCK_UN);
    m_file = FileDescriptor();
}

FileLock FileLock::take(const std::string& path, LockMode mode, milliseconds wait)
{
    FileLock lock(path, mode);
    Pauses pauses(wait);
    for (;;) {
        switch (lock.tryOnce()) {
        case Outcome::taken:
        case Outcome::failed:
            return lock;
        case Outcome::again: // the path changed in the meantime; settles by itself within a few rounds
        case Outcome::busy:
            break;
        }
        if (!pauses.pause()) {
            lock.m_heldByAnother = true;
            lock.m_problem = "Another process is using '" + path + "'";
            return lock;
        }
    }
}

FileLock::Outcome FileLock::tryOnce()
{
    std::error_code error;
    FileDescriptor file = openFile(error);
    m_onFolder = false;
    if (error == std::errc::no_such_file_or_directory) {
        file = openFolder(error);
        m_onFolder = true;
    }
    if (!error)
        error = tryLock(file.get(), m_mode);
    if (isBusy(error))
        return Outcome::busy;
    if (error) {
        m_error = error;
        m_problem = "Failed to lock file '" + m_path + "': " + errorText(error);
        return Outcome::failed;
    }
    m_file = std::move(file);
    if (isAtPath())
        return Outcome::taken;
    release();
    return Outcome::again;
}

// Opened for writing where allowed, since some network file systems require that for an exclusive lock.
FileDescriptor FileLock::openFile(std::error_code& error) const
{
    const std::initializer_list<int> exclusive{O_RDWR, O_RDONLY, O_WRONLY};
    const std::initializer_list<int> shared{O_RDONLY};
    FileDescriptor file;
    for (const int access : m_mode == LockMode::shared ? shared : exclusive) {
        file = openRegularFile(m_path, access | O_NOFOLLOW, error);
        if (error != std::errc::permission_denied && error != std::errc::read_only_file_system)
            break;
    }
    return file;
}

FileDescriptor FileLock::openFolder(std::error_code& error) const
{
    const std::string folder = deletingLastPathComponent(m_path);
    FileDescriptor file(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    error = systemError(file ? 0 : errno);
    return file;
}

bool FileLock::isAtPath() const
{
    std::error_code error;
    const auto there = FileIdentity::ofPath(m_path, error);
    if (!isHeld() || !there)
        return false;
    if (m_onFolder)
        return there->isMissing();
    const auto locked = FileIdentity::ofDescriptor(m_file.get(), error);
    return locked && locked->isSameFileAs(*there);
}

bool FileLock::makeFile()
{
    if (!isHeld() || !m_onFolder)
        return isHeld();
    constexpr mode_t ownerAndGroup = 0640;
    std::error_code error;
    FileDescriptor file
        = openRegularFile(m_path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, error, ownerAndGroup);
    // Another process may see and lock the new file first, and may then fill it.
    if (!error)
        error = tryLock(file.get(), m_mode);
    release();
    m_onFolder = false;
    if (!error)
        m_file = std::move(file);
    else
        m_problem = "Failed to make file '" + m_path + "': " + errorText(error);
    m_error = error;
    return isHeld();
}

} // namespace quorvane::platform
