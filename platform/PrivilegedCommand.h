#pragma once

#include <string>

namespace quorvane::platform {

// Runs commands as administrator. User interface thread only.
class PrivilegedCommand {
public:
    PrivilegedCommand() = default;
    PrivilegedCommand(const PrivilegedCommand&) = delete;
    PrivilegedCommand& operator=(const PrivilegedCommand&) = delete;
    virtual ~PrivilegedCommand() = default;

    // Asks for administrator authentication, runs `command` in the shell, and returns when it has ended;
    // until then windows are painted but take no input. Empty on success, else one line that describes the
    // failure.
    virtual std::string run(const std::string& command) = 0;
};

} // namespace quorvane::platform
