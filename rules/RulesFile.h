#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileIdentity.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace quorvane::platform {
class FileLock;
}

namespace quorvane::rules {

// The text of a rules file, or why there is none.
//
// Taken under a shared lock, and again when the file changed while it was read, so that a half-written file
// is not taken for a whole one. Any thread.
class RulesFileText {
public:
    // How long a reader waits for a writer; then it reads all the same.
    static constexpr std::chrono::milliseconds usualWait{2000};

    // Reads the file whole. Its size is asked through a symbolic link, its opening refuses one.
    static RulesFileText read(const std::string& path, std::chrono::milliseconds wait = usualWait);
    // The same for who holds a lock on that file already, which must last as long as the reading.
    static RulesFileText read(const std::string& path, const platform::FileLock& held);

    // Up to the first NUL byte; always valid UTF-8. Lasts as long as this object.
    std::string_view text() const { return m_text; }

    // Every byte that was read, also of a file that is not UTF-8. Lasts as long as this object.
    std::string_view bytes() const { return {m_bytes.get(), m_size}; }

    // The file that the bytes come from, in the state in which they are its contents; missing where there was
    // none. Nothing when the file could not be looked at.
    const std::optional<platform::FileIdentity>& identity() const { return m_identity; }
    // A time before that state was looked at: what changes the file afterwards may bear a later one.
    std::chrono::system_clock::time_point lookedAt() const { return m_lookedAt; }

    // True when there was nothing to read: missing, no file with contents, of size 0, or not UTF-8. No
    // failure.
    bool isNothing() const { return m_nothing; }

    // Why rules that the file may hold are not in the text: it is not UTF-8, a NUL byte hides a part, or
    // reading failed. None when all of it is there, or when there is no file.
    const std::optional<std::string>& unreadReason() const { return m_unreadReason; }

    // True when there was no memory for it, which is a failure.
    bool isTooLargeForMemory() const { return m_tooLarge; }

    // Why the file could not be read; none when it could or when there was nothing.
    const std::optional<std::string>& errorMessage() const { return m_errorMessage; }

private:
    static RulesFileText readGuarded(const std::string& path, std::optional<std::chrono::milliseconds> wait);

    enum class Outcome { done, changed };
    Outcome readOnce(const std::string& path, std::optional<std::chrono::milliseconds> wait);
    bool lookAt(const std::string& path);
    platform::FileDescriptor open(const std::string& path, std::error_code& error);
    Outcome takeBytes(const std::string& path, int descriptor);
    void decode(const std::string& path);

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::string_view m_text;
    std::optional<platform::FileIdentity> m_identity;
    std::chrono::system_clock::time_point m_lookedAt;
    bool m_nothing = false;
    bool m_tooLarge = false;
    bool m_locked = false;
    bool m_leftOpen = false;
    std::optional<std::string> m_errorMessage;
    std::optional<std::string> m_unreadReason;
};

} // namespace quorvane::rules
