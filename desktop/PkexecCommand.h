#pragma once

#include "platform/PrivilegedCommand.h"

namespace quorvane::desktop {

// By pkexec, which is looked for on PATH.
class PkexecCommand : public platform::PrivilegedCommand {
public:
    std::string run(const std::string& command) override;
};

} // namespace quorvane::desktop
