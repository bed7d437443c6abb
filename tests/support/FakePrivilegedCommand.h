#pragma once

#include "platform/PrivilegedCommand.h"

#include <functional>
#include <string>
#include <vector>

namespace quorvane::test {

// Records the commands to be run as administrator.
class FakePrivilegedCommand : public platform::PrivilegedCommand {
public:
    std::string run(const std::string& command) override
    {
        commands.push_back(command);
        meanwhile();
        return answer;
    }

    std::string answer;
    std::function<void()> meanwhile = [] {}; // called while the user is being asked
    std::vector<std::string> commands;
};

} // namespace quorvane::test
