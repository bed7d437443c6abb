#pragma once

#include <string>

namespace quorvane::platform {
class Locations;
class Log;
class PrivilegedCommand;
} // namespace quorvane::platform

namespace quorvane::workflow {

// Ordinary users may create rules if and only if others may write to the shared rules folder.

// Whether they may. Logs the folder's permissions; false for a folder that cannot be read.
bool canCreateRules(const platform::Locations& locations, platform::Log& log);

// The shell command, to be run as administrator, that lets ordinary users create rules or stops them.
std::string rulesFolderCommand(const platform::Locations& locations, bool mayCreateRules);

// Runs it and logs the result.
void letUsersCreateRules(const platform::Locations& locations, bool mayCreateRules,
    platform::PrivilegedCommand& privilegedCommand, platform::Log& log);

// The log text for a command that is run as administrator.
std::string privilegedScript(const std::string& command);

} // namespace quorvane::workflow
