#pragma once

#include "platform/AdminAuthority.h"

#include <chrono>

namespace quorvane::platform {
class AuthenticationPrompt;
}

namespace quorvane::desktop {

// Administrators are the members of the group "admin". fprintd reads fingerprints and polkit asks for
// passwords, both on the system bus. A service that vanishes during a call is a "no"; the user has no time
// limit.
class DesktopAuthority : public platform::AdminAuthority {
public:
    // `prompt` must outlive it. `busAddress` is the system bus's. `patience` is how long a service may take
    // for steps that do not wait for the user.
    DesktopAuthority(std::string busAddress, platform::AuthenticationPrompt& prompt,
        std::chrono::milliseconds patience = std::chrono::seconds(10));

    bool isAdminUser() override;
    bool verifyFingerprint(const std::string& reason) override;
    bool verifyPassword(const std::string& reason) override;

private:
    const std::string m_busAddress;
    platform::AuthenticationPrompt& m_prompt;
    const std::chrono::milliseconds m_patience;
};

// The system bus address for `verifyPassword`. Normally the fixed address, whatever the environment says: a
// variable could name an impostor's bus that answers "yes" to everything. This stops no user from running a
// modified program; what finally protects the preferences are the permissions of their file. In a sandbox,
// which cannot reach that file, the variable DBUS_SYSTEM_BUS_ADDRESS counts.
std::string systemBusAddress(bool inSandbox);

} // namespace quorvane::desktop
