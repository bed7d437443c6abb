#include "desktop/DesktopAuthority.h"

#include "desktop/BusCall.h"
#include "desktop/FingerprintReader.h"
#include "desktop/PasswordCheck.h"
#include "platform/Account.h"

#include <cstdlib>
#include <utility>

namespace quorvane::desktop {

DesktopAuthority::DesktopAuthority(
    std::string busAddress, platform::AuthenticationPrompt& prompt, std::chrono::milliseconds patience)
    : m_busAddress(std::move(busAddress))
    , m_prompt(prompt)
    , m_patience(patience)
{
}

bool DesktopAuthority::isAdminUser()
{
    return platform::isMemberOfGroup("admin");
}

bool DesktopAuthority::verifyFingerprint(const std::string& reason)
{
    const BusConnection connection(m_busAddress, m_patience);
    return FingerprintReader(connection.bus(), m_prompt, m_patience).verify(reason);
}

bool DesktopAuthority::verifyPassword(const std::string& reason)
{
    const BusConnection connection(m_busAddress, m_patience);
    return passwordCheckPassed(connection.bus(), m_prompt, reason);
}

std::string systemBusAddress(bool inSandbox)
{
    const char* given = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return inSandbox && given != nullptr ? given : "unix:path=/run/dbus/system_bus_socket";
}

} // namespace quorvane::desktop
