#pragma once

#include <cstddef>

namespace quorvane::test {

// How a read fails.
enum class ReadFailure { none, cutShort, interrupted, error, end };

// During its lifetime, one call of pread() in this program fails: the one after `position` others. The linker
// replaces the system's function by that of FailingReads.cpp. One at a time; one thread.
class FailingReads {
public:
    FailingReads(ReadFailure failure, std::size_t position);
    ~FailingReads();
    FailingReads(const FailingReads&) = delete;
    FailingReads& operator=(const FailingReads&) = delete;

    // The calls so far.
    std::size_t calls() const;
};

} // namespace quorvane::test
