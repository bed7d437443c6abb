#include "platform/Account.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <vector>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

struct AccountEntry {
    std::string name;
    std::string home;
    gid_t group = 0;
};

constexpr std::size_t firstBuffer = 1U << 14U;
constexpr std::size_t largestBuffer = 1U << 22U;

std::optional<AccountEntry> accountOfRealUser()
{
    std::vector<char> buffer(firstBuffer);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE
        && buffer.size() < largestBuffer)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr)
        return std::nullopt;
    return AccountEntry{found->pw_name, found->pw_dir == nullptr ? "" : found->pw_dir, found->pw_gid};
}

// The first buffer can be too small for a group with many members.
std::optional<gid_t> numberOfGroup(const std::string& name)
{
    std::vector<char> buffer(firstBuffer);
    group entry{};
    group* found = nullptr;
    while (getgrnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found) == ERANGE
        && buffer.size() < largestBuffer)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr)
        return std::nullopt;
    return found->gr_gid;
}

// All groups of an account, its primary one included.
std::vector<gid_t> groupsOf(const AccountEntry& account)
{
    constexpr std::size_t mostGroups = 1U << 16U; // the kernel's limit
    std::vector<gid_t> groups(64);
    for (;;) {
        int count = static_cast<int>(groups.size());
        if (getgrouplist(account.name.c_str(), account.group, groups.data(), &count) >= 0) {
            groups.resize(static_cast<std::size_t>(count));
            return groups;
        }
        if (groups.size() >= mostGroups)
            return groups;
        groups.resize(groups.size() * 2);
    }
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

bool isMemberOfGroup(const std::string& group)
{
    const auto number = numberOfGroup(group);
    const auto account = accountOfRealUser();
    if (!number || !account)
        return false;
    const std::vector<gid_t> groups = groupsOf(*account);
    return std::find(groups.begin(), groups.end(), *number) != groups.end();
}

} // namespace quorvane::platform
