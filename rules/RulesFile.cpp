#include "rules/RulesFile.h"

#include "platform/Unicode.h"
#include "rules/RuleLine.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr mode_t rulesFileMode = 0640;

// "text (number)" of the system error `number`.
std::string errorText(int number)
{
    char buffer[256];
    return std::string(strerror_r(number, buffer, sizeof buffer)) + " (" + std::to_string(number) + ")";
}

} // namespace

RulesFileText RulesFileText::read(const std::string& path)
{
    RulesFileText result;
    result.readFrom(path);
    if (result.m_errorMessage)
        result.m_unreadReason = result.m_errorMessage;
    return result;
}

void RulesFileText::readFrom(const std::string& path)
{
    struct stat status { };
    if (stat(path.c_str(), &status) != 0 || status.st_size <= 0) {
        m_nothing = true;
        return;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    m_bytes.reset(new (std::nothrow) char[size + 1]);
    if (!m_bytes) {
        m_errorMessage = "Internal error: unable to allocate memory";
        return;
    }
    errno = 0;
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    // Deliberate: descriptor 0 counts as a failure too.
    if (file.get() <= 0) {
        m_errorMessage = "Failed to open file '" + path + "' for reading: " + errorText(errno);
        return;
    }
    errno = 0;
    if (::read(file.get(), m_bytes.get(), size) != static_cast<ssize_t>(size)) {
        m_errorMessage = "Failed to read() file '" + path + "': " + errorText(errno);
        file.release(); // Deliberate: left open on this path.
        return;
    }
    m_bytes[size] = '\0';
    m_text = m_bytes.get();
    if (m_text.size() < size)
        m_unreadReason = "The rules file '" + path + "' holds a NUL byte: nothing behind it is read";
    if (!isValidUtf8(m_text)) {
        m_text = {};
        m_nothing = true;
        m_unreadReason = "The rules file '" + path + "' is not valid UTF-8: none of it is read";
    }
}

RulesFileWriter::RulesFileWriter(std::string path)
    : m_path(std::move(path))
    , m_file(open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, rulesFileMode))
{
    if (!isOpen())
        m_errorMessage = "Failed to open file '" + m_path + "' for writing: " + errorText(errno);
}

void RulesFileWriter::writeLine(std::string_view line)
{
    const std::string_view part = writtenPart(line);
    errno = 0;
    if (::write(m_file.get(), part.data(), part.size()) != static_cast<ssize_t>(part.size()))
        m_errorMessage = "Failed write() operation on file '" + m_path + "' " + errorText(errno);
}

void RulesFileWriter::finish()
{
    fchmod(m_file.get(), rulesFileMode);
    m_file = FileDescriptor();
}

} // namespace quorvane
