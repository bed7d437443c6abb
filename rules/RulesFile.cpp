#include "rules/RulesFile.h"

#include "platform/FileLock.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "platform/Unicode.h"

#include <cerrno>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::rules {

namespace {

// From this size on, large pages are worth asking for: of 145 MB the kernel then makes 70 instead of 35,000,
// in a quarter less of its time for the reading.
constexpr std::size_t longFile = 4U << 20U;

std::string openFailure(const std::string& path, const std::error_code& error)
{
    return "Failed to open file '" + path + "' for reading: " + platform::errorText(error);
}

std::string readFailure(const std::string& path, const std::error_code& error)
{
    return "Failed to read() file '" + path + "': " + platform::errorText(error);
}

// The whole pages of a part of memory.
struct Pages {
    void* first = nullptr;
    std::size_t size = 0; // in bytes

    Pages(char* begin, std::size_t length)
    {
        static const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        first = begin;
        size = length;
        if (std::align(pageSize, pageSize, first, size) == nullptr)
            size = 0;
        size -= size % pageSize;
    }
    // Only a request; what the memory holds does not depend on whether the kernel grants it.
    void advise(int advice) const { madvise(first, size, advice); }
};

} // namespace

RulesFileText RulesFileText::read(const std::string& path, std::chrono::milliseconds wait)
{
    return readGuarded(path, wait);
}

RulesFileText RulesFileText::read(const std::string& path, const platform::FileLock&)
{
    return readGuarded(path, std::nullopt);
}

// Waits for writers that take the lock. Any other is detected by the file's identity, which then differs
// before and after the read. If one never stops writing, the last read counts: the next poll finds another
// identity and reads again.
RulesFileText RulesFileText::readGuarded(
    const std::string& path, std::optional<std::chrono::milliseconds> wait)
{
    constexpr int mostReadings = 4;
    for (int reading = 1;; ++reading) {
        RulesFileText result;
        const Outcome outcome = result.readOnce(path, wait);
        if (outcome == Outcome::done || reading == mostReadings) {
            result.decode(path);
            return result;
        }
        if (!result.m_locked && wait)
            wait = std::chrono::milliseconds(0); // waited long enough
    }
}

RulesFileText::Outcome RulesFileText::readOnce(
    const std::string& path, std::optional<std::chrono::milliseconds> wait)
{
    if (!lookAt(path))
        return Outcome::done;
    std::error_code error;
    platform::FileDescriptor file = open(path, error);
    if (!file)
        return error == std::errc::no_such_file_or_directory ? Outcome::changed : Outcome::done;
    m_locked = wait && lockDescriptor(file.get(), platform::LockMode::shared, *wait, error);
    const Outcome outcome = takeBytes(path, file.get());
    if (m_leftOpen) {
        flock(file.get(), LOCK_UN);
        file.release(); // Deliberate: left open on this path.
    }
    return outcome;
}

// True when there is a file to read. An empty one counts: a writer that holds the lock may just have
// truncated it.
bool RulesFileText::lookAt(const std::string& path)
{
    struct stat status { };
    m_lookedAt = std::chrono::system_clock::now();
    if (stat(path.c_str(), &status) == 0)
        m_identity = platform::FileIdentity::ofStatus(status);
    else if (errno == ENOENT)
        m_identity = platform::FileIdentity::missing();
    else
        m_errorMessage = openFailure(path, platform::systemError(errno));
    m_nothing = m_identity && m_identity->size <= 0;
    return m_identity && *m_identity != platform::FileIdentity::missing();
}

// None when it cannot be read or there turns out to be nothing to read.
platform::FileDescriptor RulesFileText::open(const std::string& path, std::error_code& error)
{
    platform::FileDescriptor file = platform::openRegularFile(path, O_RDONLY | O_NOFOLLOW, error);
    if (error == std::errc::no_such_file_or_directory) {
        m_identity = platform::FileIdentity::missing(); // removed since the check
        m_nothing = true;
    } else if (error == std::errc::not_supported) {
        m_nothing = true; // a pipe or device
    } else if (error == std::errc::is_a_directory) {
        if (!m_nothing)
            m_errorMessage = readFailure(path, error);
    } else if (file.get() <= 0) { // Deliberate: descriptor 0 counts as a failure too.
        if (!m_nothing)
            m_errorMessage = openFailure(path, error);
        return platform::FileDescriptor();
    }
    return file;
}

RulesFileText::Outcome RulesFileText::takeBytes(const std::string& path, int descriptor)
{
    std::error_code error;
    m_nothing = false;
    m_lookedAt = std::chrono::system_clock::now();
    m_identity = platform::FileIdentity::ofDescriptor(descriptor, error);
    m_size = m_identity ? static_cast<std::size_t>(m_identity->size) : 0;
    m_bytes.reset(new (std::nothrow) char[m_size + 1]);
    if (!m_bytes) {
        m_size = 0;
        m_tooLarge = true;
        m_errorMessage = "Internal error: unable to allocate memory";
        return Outcome::done;
    }
    if (m_size > longFile)
        Pages(m_bytes.get(), m_size).advise(MADV_HUGEPAGE);
    const std::size_t got = platform::readFully(descriptor, m_bytes.get(), m_size, error);
    std::error_code ignored;
    const Outcome outcome = platform::FileIdentity::ofDescriptor(descriptor, ignored) == m_identity
        ? Outcome::done
        : Outcome::changed;
    if (got != m_size) {
        m_size = got;
        m_leftOpen = outcome == Outcome::done;
        m_errorMessage = readFailure(path, error);
    }
    m_bytes[m_size] = '\0';
    return outcome;
}

void RulesFileText::discard(std::string_view part)
{
    const auto start = static_cast<std::size_t>(part.data() - m_bytes.get());
    Pages(m_bytes.get() + start, part.size()).advise(MADV_DONTNEED);
}

void RulesFileText::decode(const std::string& path)
{
    m_unreadReason = m_errorMessage;
    if (m_errorMessage || m_nothing)
        return;
    m_text = m_bytes.get();
    m_nothing = m_size == 0;
    if (m_text.size() < m_size)
        m_unreadReason = "The rules file '" + path + "' holds a NUL byte: nothing behind it is read";
    if (!platform::isValidUtf8(m_text)) {
        m_text = {};
        m_nothing = true;
        m_unreadReason = "The rules file '" + path + "' is not valid UTF-8: none of it is read";
    }
}

} // namespace quorvane::rules
