#pragma once

#include <string>

namespace quorvane::platform {

// Decides whether the user is an administrator, and makes the user prove it.
//
// Answers are yes or no: no reader, cancelled, refused and failed are all "no", because no caller treats them
// differently. Failures are not reported. User interface thread only. The two checks return when the user has
// answered; until then windows are painted but take no input.
class AdminAuthority {
public:
    AdminAuthority() = default;
    AdminAuthority(const AdminAuthority&) = delete;
    AdminAuthority& operator=(const AdminAuthority&) = delete;
    virtual ~AdminAuthority() = default;

    // Whether the account of the real user is in the group of administrators. Asks for no proof.
    virtual bool isAdminUser() = 0;

    // True when an enrolled finger was recognised. False at once when no reader can be used. `reason` is
    // shown while the reader waits for the finger; it completes "is trying to ...".
    virtual bool verifyFingerprint(const std::string& reason) = 0;

    // True when the system's password dialog was passed. `reason` as above.
    virtual bool verifyPassword(const std::string& reason) = 0;
};

} // namespace quorvane::platform
