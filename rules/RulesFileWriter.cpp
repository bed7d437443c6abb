#include "rules/RulesFileWriter.h"

#include "platform/PathComponents.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "rules/RulesContent.h"

#include <cerrno>
#include <cstdint>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::rules {

namespace {

constexpr mode_t rulesFileMode = 0640;

class RulesFileWriting {
public:
    RulesFileWriting(const std::string& path, std::optional<std::string_view> old)
        : m_path(path)
        , m_old(old)
    {
    }

    WriteResult write(const RulesContent& content)
    {
        open();
        if (!m_file)
            return m_result;
        m_result.opened = true;
        cutTo(writeOver(content));
        expect(fsync(m_file.get()) == 0, "sync");
        if (m_isNew)
            syncFolder();
        expect(fchmod(m_file.get(), rulesFileMode) == 0, "set the permissions of");
        std::error_code unknown;
        m_result.identity = platform::FileIdentity::ofDescriptor(m_file.get(), unknown);
        // close() releases the descriptor even when it fails, and EINTR is not a failure.
        expect(close(m_file.release()) == 0 || errno == EINTR, "close");
        return m_result;
    }

private:
    // Detects a new file, since its folder entry needs syncing as well.
    void open()
    {
        constexpr int flags = O_WRONLY | O_NOFOLLOW;
        std::error_code error;
        m_file = platform::openRegularFile(m_path, flags, error);
        if (error == std::errc::no_such_file_or_directory) {
            m_isNew = true;
            m_file = platform::openRegularFile(m_path, flags | O_CREAT, error, rulesFileMode);
        }
        if (error)
            m_result.message
                = "Failed to open file '" + m_path + "' for writing: " + platform::errorText(error);
    }

    // Writes all rules with as few calls as possible. After a failure the rest of that rule is skipped, and
    // the next one directly follows the part that was written. Returns the resulting length in bytes.
    std::size_t writeOver(const RulesContent& content)
    {
        const std::string_view bytes = content.bytes();
        std::size_t length = 0;
        for (std::size_t at = 0; at < bytes.size();) {
            std::error_code error;
            const std::size_t written = platform::writeFully(m_file.get(), bytes.substr(at), error);
            length += written;
            at += written;
            if (at == bytes.size())
                break;
            if (!error)
                error = platform::systemError(EIO); // a write that returned 0 without an error
            m_result.message
                = "Failed write() operation on file '" + m_path + "' " + platform::errorText(error);
            if (m_old && putBack(length))
                return m_old->size();
            at = content.endOfRuleAt(at);
        }
        return length;
    }

    // Old bytes left after the new ones are a failure; if the file was not longer anyway, there are none.
    void cutTo(std::size_t length)
    {
        if (ftruncate(m_file.get(), static_cast<off_t>(length)) == 0)
            return;
        const std::error_code reason = platform::systemError(errno);
        std::error_code unknown;
        const auto left = platform::FileIdentity::ofDescriptor(m_file.get(), unknown);
        if (left && left->size <= static_cast<std::int64_t>(length))
            return;
        m_result.message
            = "Failed to cut to its length file '" + m_path + "': " + platform::errorText(reason);
        if (m_old)
            putBack(length);
    }

    // Restores the overwritten bytes, which cannot run out of space.
    bool putBack(std::size_t written)
    {
        std::error_code error;
        const std::string_view lost = m_old->substr(0, written);
        if (lseek(m_file.get(), 0, SEEK_SET) != 0
            || platform::writeFully(m_file.get(), lost, error) != lost.size())
            return false;
        m_result.opened = false;
        return true;
    }

    void syncFolder()
    {
        const std::string path = platform::deletingLastPathComponent(m_path);
        const platform::FileDescriptor folder(
            ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        expect(folder && fsync(folder.get()) == 0, "sync the folder of");
    }

    // The data is written already, so a failure from here on is only a warning.
    void expect(bool done, const char* what)
    {
        if (!done)
            m_result.warnings.push_back(std::string("Failed to ") + what + " file '" + m_path
                + "': " + platform::errorText(platform::systemError(errno)));
    }

    const std::string& m_path;
    const std::optional<std::string_view> m_old;
    platform::FileDescriptor m_file;
    bool m_isNew = false;
    WriteResult m_result;
};

} // namespace

WriteResult writeRulesFile(
    const std::string& path, const RulesContent& content, std::optional<std::string_view> old)
{
    return RulesFileWriting(path, old).write(content);
}

} // namespace quorvane::rules
