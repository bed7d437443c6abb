#pragma once

#include <string>

namespace quorvane {

class Locations;
class Log;
class PrivilegedCommand;

// Ordinary users may create rules exactly when others may write to the shared rules folder.

// Whether they may. Logs the folder's permissions; a folder that cannot be read answers false.
bool canCreateRules(const Locations& locations, Log& log);

// The shell command, to be run as administrator, that lets ordinary users create rules or stops them.
std::string rulesFolderCommand(const Locations& locations, bool mayCreateRules);

// Runs it, and logs what came of it.
void letUsersCreateRules(
    const Locations& locations, bool mayCreateRules, PrivilegedCommand& privilegedCommand, Log& log);

// How the log tells of a command that is run as administrator.
std::string privilegedScript(const std::string& command);

} // namespace quorvane
