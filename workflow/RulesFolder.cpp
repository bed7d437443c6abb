#include "workflow/RulesFolder.h"

#include "platform/FilePermissions.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/PrivilegedCommand.h"

#include <cstdint>
#include <filesystem>

namespace quorvane::workflow {

namespace {

constexpr std::uint32_t writableByOthers = 0002;

// `text` quoted as one shell word.
std::string quotedForShell(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += R"('\'')";
        else
            quoted += c;
    }
    return quoted + "'";
}

std::string rulesFolder(const platform::Locations& locations)
{
    std::string folder = locations.sharedFolder();
    folder.pop_back(); // "/"
    return folder;
}

} // namespace

bool canCreateRules(const platform::Locations& locations, platform::Log& log)
{
    const std::uint32_t permissions = platform::permissionsOf(rulesFolder(locations)).value_or(0);
    log.write("posix mask for rules folder is " + std::to_string(permissions));
    return (permissions & writableByOthers) != 0;
}

std::string rulesFolderCommand(const platform::Locations& locations, bool mayCreateRules)
{
    // An administrator's shell starts in another folder.
    const std::string folder = std::filesystem::absolute(rulesFolder(locations)).string();
    return std::string("/bin/chmod ") + (mayCreateRules ? "777 " : "775 ") + quotedForShell(folder);
}

void letUsersCreateRules(const platform::Locations& locations, bool mayCreateRules,
    platform::PrivilegedCommand& privilegedCommand, platform::Log& log)
{
    const std::string command = rulesFolderCommand(locations, mayCreateRules);
    log.write("script source: " + privilegedScript(command));
    log.write(privilegedCommand.run(command));
}

std::string privilegedScript(const std::string& command)
{
    return "do shell script \"" + command + "\" with administrator privileges";
}

} // namespace quorvane::workflow
