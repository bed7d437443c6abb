#pragma once

#include "platform/FileDescriptor.h"

#include <chrono>
#include <string>
#include <system_error>

namespace quorvane::platform {

enum class LockMode { shared, exclusive };

// Locks an open file for as long as it is open. True when the lock was acquired within `wait` (0: one try);
// otherwise `error` says why, EWOULDBLOCK when another holder has it.
bool lockDescriptor(int descriptor, LockMode mode, std::chrono::milliseconds wait, std::error_code& error);

// A lock on a file, advisory: it binds only programs that take it too. It ends with the object or the
// process, whichever is first, and leaves nothing behind on disk. Holders in the same process exclude each
// other as well.
//
// The lock is on the file itself, which is neither created nor changed; where there is no file, on its
// folder, until makeFile() moves it. A file that is renamed or removed keeps its lock: see isAtPath(). One
// thread at a time.
class FileLock {
public:
    // Waits at most `wait`; with 0 it tries once. A symbolic link as last component is refused, and so is
    // anything but a regular file. A read-only file can be locked too.
    static FileLock take(const std::string& path, LockMode mode, std::chrono::milliseconds wait);

    // Holds nothing.
    FileLock() = default;
    FileLock(FileLock&& other) noexcept = default;
    FileLock& operator=(FileLock&& other) noexcept;
    ~FileLock();

    bool isHeld() const { return static_cast<bool>(m_file); }
    // True when it could not be acquired because of another holder.
    bool isHeldByAnother() const { return m_heldByAnother; }
    // The system's error when it could not be acquired for any other reason; else none.
    const std::error_code& error() const { return m_error; }
    // Why it is not held, in words; empty when it is.
    const std::string& problem() const { return m_problem; }

    // True while the path still resolves to what is locked: the same file, or still no file.
    bool isAtPath() const;

    // Where there was no file: creates an empty one for owner and group (0640) and moves the lock to it.
    // False, and nothing is held any more, when that failed or another process was faster; then take the lock
    // again. True, and nothing changes, when the lock is on a file already.
    bool makeFile();

private:
    FileLock(std::string path, LockMode mode);

    enum class Outcome { taken, busy, again, failed };
    Outcome tryOnce();
    FileDescriptor openFile(std::error_code& error) const;
    FileDescriptor openFolder(std::error_code& error) const;
    void release();

    std::string m_path;
    LockMode m_mode = LockMode::exclusive;
    FileDescriptor m_file;
    bool m_onFolder = false;
    bool m_heldByAnother = false;
    std::error_code m_error;
    std::string m_problem;
};

} // namespace quorvane::platform
