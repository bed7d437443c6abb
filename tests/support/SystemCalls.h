#pragma once

#include <functional>
#include <optional>

#include <sys/types.h>

namespace quorvane::test {

enum class SystemCall { read, write, fsync, ftruncate, fchmod, close };

// During its lifetime, intercepts every such call of this thread. Only in test programs that link
// SystemCalls.cpp; one hook per call at a time.
class SystemCallHook {
public:
    // The result of the call, with errno set for a failure; none performs the real call. `number` counts from
    // 0.
    using Answer = std::function<std::optional<ssize_t>(int number)>;

    SystemCallHook(SystemCall call, Answer answer);
    ~SystemCallHook();
    SystemCallHook(const SystemCallHook&) = delete;
    SystemCallHook& operator=(const SystemCallHook&) = delete;

private:
    const SystemCall m_call;
};

// An answer that makes the calls fail for which `which` is true.
SystemCallHook::Answer failing(int error, std::function<bool(int number)> which);

} // namespace quorvane::test
