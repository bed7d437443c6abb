#pragma once

#include "platform/PrivilegedCommand.h"

namespace quorvane::desktop {

// Runs commands by pkexec, which is looked up in PATH.
class PkexecCommand : public platform::PrivilegedCommand {
public:
    std::string run(const std::string& command) override;
};

} // namespace quorvane::desktop
