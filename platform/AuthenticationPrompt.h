#pragma once

#include <functional>
#include <string>

namespace quorvane::platform {

enum class Awaited {
    finger,
    fingerAgain, // the reader was touched, but the print could not be read
    password, // asked for in another program's window
};

// Shows what an authentication in progress is waiting for, and lets the user cancel it. User interface thread
// only.
class AuthenticationPrompt {
public:
    AuthenticationPrompt() = default;
    AuthenticationPrompt(const AuthenticationPrompt&) = delete;
    AuthenticationPrompt& operator=(const AuthenticationPrompt&) = delete;
    virtual ~AuthenticationPrompt() = default;

    // Asks for `what`, replacing the previous request. `reason` completes "is trying to ...". `giveUp` is
    // called when the user cancels while the prompt is shown.
    virtual void ask(Awaited what, const std::string& reason, std::function<void()> giveUp) = 0;

    virtual void withdraw() = 0;
};

} // namespace quorvane::platform
