#include "tests/codesign/FailingReads.h"

#include <cerrno>

#include <unistd.h>

namespace {

using quorvane::test::ReadFailure;

ReadFailure failure = ReadFailure::none;
std::size_t failingCall = 0;
std::size_t callsSoFar = 0;

} // namespace

// Names defined by the linker option --wrap=pread: of the replacement, and of the system's function.
extern "C" ssize_t __real_pread(int descriptor, void* to, size_t length, off_t offset); // NOLINT
extern "C" ssize_t __wrap_pread(int descriptor, void* to, size_t length, off_t offset) // NOLINT
{
    const bool fails = failure != ReadFailure::none && callsSoFar++ == failingCall;
    switch (fails ? failure : ReadFailure::none) {
    case ReadFailure::cutShort:
        return __real_pread(descriptor, to, length > 1 ? length / 2 : length, offset);
    case ReadFailure::interrupted:
        errno = EINTR;
        return -1;
    case ReadFailure::error:
        errno = EIO;
        return -1;
    case ReadFailure::end:
        return 0;
    case ReadFailure::none:
        break;
    }
    return __real_pread(descriptor, to, length, offset);
}

namespace quorvane::test {

FailingReads::FailingReads(ReadFailure how, std::size_t position)
{
    failure = how;
    failingCall = position;
    callsSoFar = 0;
}

FailingReads::~FailingReads()
{
    failure = ReadFailure::none;
}

std::size_t FailingReads::calls() const
{
    return callsSoFar;
}

} // namespace quorvane::test
