#include "tests/support/SystemCalls.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

// The linker prefers these functions of the test program to those of the C library.

namespace quorvane::test {

namespace {

struct Hook {
    SystemCallHook::Answer answer;
    int calls = 0;
};

Hook& hookOf(SystemCall call)
{
    thread_local std::array<Hook, 6> hooks;
    return hooks[static_cast<std::size_t>(call)];
}

// The hook's answer, else the result of the real call.
template <class... Arguments> ssize_t callOf(SystemCall call, long number, Arguments... arguments)
{
    Hook& hook = hookOf(call);
    if (hook.answer) {
        // Removed during the call, since it may make such calls itself.
        const SystemCallHook::Answer answer = std::exchange(hook.answer, nullptr);
        const std::optional<ssize_t> instead = answer(hook.calls++);
        const int error = errno;
        hook.answer = answer;
        errno = error;
        if (instead)
            return *instead;
    }
    return syscall(number, arguments...);
}

} // namespace

SystemCallHook::SystemCallHook(SystemCall call, Answer answer)
    : m_call(call)
{
    hookOf(call) = {std::move(answer), 0};
}

SystemCallHook::~SystemCallHook()
{
    hookOf(m_call) = {};
}

SystemCallHook::Answer failing(int error, std::function<bool(int number)> which)
{
    return [error, which = std::move(which)](int number) -> std::optional<ssize_t> {
        if (!which(number))
            return std::nullopt;
        errno = error;
        return -1;
    };
}

} // namespace quorvane::test

using quorvane::test::callOf;
using quorvane::test::SystemCall;

extern "C" {

ssize_t read(int descriptor, void* bytes, size_t size)
{
    return callOf(SystemCall::read, SYS_read, descriptor, bytes, size);
}

ssize_t write(int descriptor, const void* bytes, size_t size)
{
    return callOf(SystemCall::write, SYS_write, descriptor, bytes, size);
}

int fsync(int descriptor)
{
    return static_cast<int>(callOf(SystemCall::fsync, SYS_fsync, descriptor));
}

int ftruncate(int descriptor, off_t size) noexcept
{
    return static_cast<int>(callOf(SystemCall::ftruncate, SYS_ftruncate, descriptor, size));
}

int fchmod(int descriptor, mode_t mode) noexcept
{
    return static_cast<int>(callOf(SystemCall::fchmod, SYS_fchmod, descriptor, mode));
}

int close(int descriptor)
{
    return static_cast<int>(callOf(SystemCall::close, SYS_close, descriptor));
}

} // extern "C"
