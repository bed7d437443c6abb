#pragma once

#include <string>

namespace quorvane::platform {
class Locations;
class Log;
class PrivilegedCommand;
} // namespace quorvane::platform

namespace quorvane::workflow {

// Ordinary users may create rules exactly when others may write to the shared rules folder.

// Whether they may. Logs the folder's permissions; a folder that cannot be read answers false.
bool canCreateRules(const platform::Locations& locations, platform::Log& log);

// The shell command, to be run as administrator, that lets ordinary users create rules or stops them.
std::string rulesFolderCommand(const platform::Locations& locations, bool mayCreateRules);

// Runs it, and logs what came of it.
void letUsersCreateRules(const platform::Locations& locations, bool mayCreateRules,
    platform::PrivilegedCommand& privilegedCommand, platform::Log& log);

// How the log tells of a command that is run as administrator.
std::string privilegedScript(const std::string& command);

} // namespace quorvane::workflow
