#pragma once

#include "platform/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

// The program file that a running process was started from.
struct ProcessProgram {
    FileDescriptor file; // the very file, even when its path is gone or names another file by now
    std::string path; // where the file was; may not name it any longer
};

// The program of the process `pid`. None when no such process runs, it ends meanwhile, or its program may not
// be read. Any thread.
std::optional<ProcessProgram> programOfProcess(std::int32_t pid);

} // namespace quorvane
