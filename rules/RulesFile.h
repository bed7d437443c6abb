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
// Read under a shared lock, and again if the file changed during the read, so that a half-written file is not
// taken for a complete one. Any thread.
class RulesFileText {
public:
    // How long a reader waits for a writer; then it reads without the lock.
    static constexpr std::chrono::milliseconds usualWait{2000};

    // Reads the file whole. A symbolic link is followed for the size but refused when opening.
    static RulesFileText read(const std::string& path, std::chrono::milliseconds wait = usualWait);
    // The same for a caller that already holds a lock on that file and keeps it during the read.
    static RulesFileText read(const std::string& path, const platform::FileLock& held);

    // Up to the first NUL byte; always valid UTF-8. Valid as long as this object.
    std::string_view text() const { return m_text; }

    // Returns the memory of a part of the text to the system; what text() and bytes() hold there is undefined
    // from then on. For a reader that goes through a long text once.
    void discard(std::string_view part);

    // All bytes read, even of a file that is not UTF-8. Valid as long as this object.
    std::string_view bytes() const { return {m_bytes.get(), m_size}; }

    // The identity of the file in the state in which it held these bytes; isMissing() when there was no file.
    // None when it could not be determined.
    const std::optional<platform::FileIdentity>& identity() const { return m_identity; }
    // A time before that state was determined: any change not seen happened after it.
    std::chrono::system_clock::time_point lookedAt() const { return m_lookedAt; }

    // True when there was nothing to read: the file is missing, not a regular file, empty or not UTF-8. Not a
    // failure.
    bool isNothing() const { return m_nothing; }

    // Why rules that the file may hold are not in the text: it is not UTF-8, a NUL byte hides a part, or
    // reading failed. None when the text is complete, or when there is no file.
    const std::optional<std::string>& unreadReason() const { return m_unreadReason; }

    // True when there was not enough memory for it, which is a failure.
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
