#pragma once

#include "platform/PrivilegedCommand.h"

namespace quorvane::platform {

// By pkexec, which is looked for on PATH.
class PkexecCommand : public PrivilegedCommand {
public:
    std::string run(const std::string& command) override;
};

} // namespace quorvane::platform
