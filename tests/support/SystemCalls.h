#pragma once

#include <functional>
#include <optional>

#include <sys/types.h>

namespace quorvane::test {

enum class SystemCall { read, write, fsync, ftruncate, fchmod, close };

// For as long as it lives, is asked before every such call that this thread makes. Only in test programs that
// SystemCalls.cpp is a source of; one hook per call at a time.
class SystemCallHook {
public:
    // What the call is to return, with errno set for a failure; none lets it happen. `number` counts from 0.
    using Answer = std::function<std::optional<ssize_t>(int number)>;

    SystemCallHook(SystemCall call, Answer answer);
    ~SystemCallHook();
    SystemCallHook(const SystemCallHook&) = delete;
    SystemCallHook& operator=(const SystemCallHook&) = delete;

private:
    const SystemCall m_call;
};

// An answer that fails those calls for which `which` is true.
SystemCallHook::Answer failing(int error, std::function<bool(int number)> which);

} // namespace quorvane::test
