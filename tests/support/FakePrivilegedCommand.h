#pragma once

#include "platform/PrivilegedCommand.h"

#include <functional>
#include <string>
#include <vector>

namespace quorvane::test {

// Notes the commands that were to be run as administrator.
class FakePrivilegedCommand : public platform::PrivilegedCommand {
public:
    std::string run(const std::string& command) override
    {
        commands.push_back(command);
        meanwhile();
        return answer;
    }

    std::string answer;
    std::function<void()> meanwhile = [] {}; // what happens while the person is asked
    std::vector<std::string> commands;
};

} // namespace quorvane::test
