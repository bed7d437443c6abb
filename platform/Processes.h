#pragma once

#include "platform/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::platform {

// The program file that a running process was started from.
struct ProcessProgram {
    FileDescriptor file; // the program file itself, even when its path is gone or names another file by now
    std::string path; // the path at start; may no longer name the file
};

// The program of the process `pid`. None when no such process runs, it ends during the call, or its program
// may not be read. Any thread.
std::optional<ProcessProgram> programOfProcess(std::int32_t pid);

// The path that process `pid` was started from; when the file is gone by now, the path it had. None when no
// such process runs, it is a zombie or a kernel thread, or access is denied. Any thread.
std::optional<std::string> programPathOfProcess(std::int32_t pid);

// When process `pid` was started, in clock ticks since boot. None when no such process runs. Any thread.
std::optional<std::uint64_t> startTimeOfProcess(std::int32_t pid);

} // namespace quorvane::platform
