#include "platform/Locations.h"

#include "platform/Account.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quorvane::platform {

namespace {

// The product's real locations must not count as a sandbox, however they are spelled.
bool leadsToTheFileSystemsRoot(const std::string& path)
{
    std::error_code error;
    return std::filesystem::weakly_canonical(path, error) == "/" && !error;
}

} // namespace

Locations::Locations(std::string root, std::string login)
    : m_root(std::move(root))
    , m_login(std::move(login))
{
    if (leadsToTheFileSystemsRoot(m_root))
        m_root.clear();
    while (!m_root.empty() && m_root.back() == '/')
        m_root.pop_back();
}

Locations Locations::fromEnvironment()
{
    const char* root = std::getenv("QUORVANE_ROOT");
    return {root == nullptr ? "" : root, loginName()};
}

std::string Locations::sharedFolder() const
{
    return m_root + "/Users/Shared/Quorvane/";
}

std::string Locations::userRulesFile() const
{
    return sharedFolder() + m_login + ".quorvane.rc";
}

std::string Locations::exchangeFileName() const
{
    return m_login + ".quorv";
}

std::string Locations::failSafeFile() const
{
    return sharedFolder() + "failsafe.rc";
}

std::string Locations::failSafeStrictMarker() const
{
    return failSafeFile() + ".strict";
}

std::string Locations::learningModeMarker() const
{
    return sharedFolder() + "learning_mode";
}

std::string Locations::preferencesFile() const
{
    return sharedFolder() + "vantreal.Quorvane.preferences.plist";
}

std::string Locations::extrasFolder() const
{
    return m_root + "/Users/Shared/Quorvane Extras/";
}

std::string Locations::systemFolder() const
{
    return m_root + "/Library/Application Support/Quorvane/";
}

std::string Locations::mainSystemRulesFile() const
{
    return systemFolder() + "quorvane.rc";
}

std::string Locations::paranoidSystemRulesFile() const
{
    return systemFolder() + "paranoid.rc";
}

std::string Locations::noticeIconFile() const
{
    return systemFolder() + "lock.png";
}

std::string Locations::userGuideFile() const
{
    return systemFolder() + "Quorvane User Guide.pdf";
}

} // namespace quorvane::platform
