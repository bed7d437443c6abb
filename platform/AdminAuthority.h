#pragma once

#include <string>

namespace quorvane::platform {

// Tells whether the person at the keyboard is an administrator, and has them prove it.
//
// Answers are yes or no: no reader, cancelled, refused and failed are all "no", because nobody treats them
// differently. No message tells of a failure. User interface thread only. The two checks return when the
// person has answered; until then windows are painted but take no input.
class AdminAuthority {
public:
    AdminAuthority() = default;
    AdminAuthority(const AdminAuthority&) = delete;
    AdminAuthority& operator=(const AdminAuthority&) = delete;
    virtual ~AdminAuthority() = default;

    // Whether the account of the real user is in the group of administrators. Asks nobody to prove anything.
    virtual bool isAdminUser() = 0;

    // True when an enrolled finger was recognised. False at once when no reader can be used. `reason` is
    // shown while the finger is awaited; it completes "is trying to ...".
    virtual bool verifyFingerprint(const std::string& reason) = 0;

    // True when the system's password dialog was passed. `reason` as above.
    virtual bool verifyPassword(const std::string& reason) = 0;
};

} // namespace quorvane::platform
