#include "platform/Account.h"

#include <cstdlib>
#include <optional>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace quorvane {

namespace {

struct AccountEntry {
    std::string name;
    std::string home;
};

std::optional<AccountEntry> accountOfRealUser()
{
    std::vector<char> buffer(1 << 14);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE
        && buffer.size() < 1 << 22)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr)
        return std::nullopt;
    return AccountEntry{found->pw_name, found->pw_dir == nullptr ? "" : found->pw_dir};
}

} // namespace

std::string loginName()
{
    const auto account = accountOfRealUser();
    return account ? account->name : std::to_string(getuid());
}

std::string homeDirectory()
{
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return home;
    const auto account = accountOfRealUser();
    return account ? account->home : "";
}

} // namespace quorvane
