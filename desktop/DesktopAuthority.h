#pragma once

#include "platform/AdminAuthority.h"

#include <chrono>

namespace quorvane::platform {
class AuthenticationPrompt;
}

namespace quorvane::desktop {

// Administrators are the members of the group "admin". Fingers are read by fprintd, passwords asked for by
// polkit, both on the system bus. A service that goes away in mid-call is a "no"; for a person there is no
// time limit.
class DesktopAuthority : public platform::AdminAuthority {
public:
    // `prompt` must outlive it. `busAddress` is the system bus's. `patience` is how long a service may take
    // for what no person has to do.
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

// The system bus that `verifyPassword` can be asked over. In everyday use its fixed address, whatever the
// environment says: a variable could name the bus of somebody who answers "yes" to everything. This keeps
// nobody from a program of their own; what protects the preferences in the end are the permissions of their
// file. In a sandbox, which cannot reach them, the variable DBUS_SYSTEM_BUS_ADDRESS counts.
std::string systemBusAddress(bool inSandbox);

} // namespace quorvane::desktop
