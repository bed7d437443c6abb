#pragma once

#include <cstddef>

namespace quorvane::test {

// How a read fails.
enum class ReadFailure { none, cutShort, error, end };

// While it lives, one call of pread() in this program fails: the one that comes after `position` others. The
// linker puts the function of FailingReads.cpp in the place of the system's. One at a time; one thread.
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
