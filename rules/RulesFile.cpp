#include "rules/RulesFile.h"

#include "platform/FileLock.h"
#include "platform/MemoryPages.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "platform/Unicode.h"

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace quorvane::rules {

namespace {

std::string openFailure(const std::string& path, const std::error_code& error)
{
    return "Failed to open file '" + path + "' for reading: " + platform::errorText(error);
}

std::string readFailure(const std::string& path, const std::error_code& error)
{
    return "Failed to read() file '" + path + "': " + platform::errorText(error);
}

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
    platform::useLargePages(m_bytes.get(), m_size);
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
    if (part.empty()) // and perhaps of no text at all
        return;
    const auto start = static_cast<std::size_t>(part.data() - m_bytes.get());
    platform::discardPages(m_bytes.get() + start, part.size());
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
