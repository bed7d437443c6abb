#pragma once

#include <utility>

#include <unistd.h>

namespace quorvane::platform {

// Owns an open file descriptor; a negative one means none. Movable; one thread at a time.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1)
        : m_descriptor(descriptor)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : m_descriptor(other.release())
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~FileDescriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    int get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

    // Gives the descriptor up without closing it.
    int release() { return std::exchange(m_descriptor, -1); }

private:
    int m_descriptor;
};

} // namespace quorvane::platform
