#pragma once

#include <functional>
#include <string>

namespace quorvane::platform {

enum class Awaited {
    finger,
    fingerAgain, // it was touched, but not well enough to be read
    password, // in a window that is not ours
};

// Tells the person what is awaited while an authentication goes on, and lets them give it up.
class AuthenticationPrompt {
public:
    AuthenticationPrompt() = default;
    AuthenticationPrompt(const AuthenticationPrompt&) = delete;
    AuthenticationPrompt& operator=(const AuthenticationPrompt&) = delete;
    virtual ~AuthenticationPrompt() = default;

    // Asks for `what`, in place of what it asked for before. `reason` completes "is trying to ...". `giveUp`
    // is called when the person does not want to, while the prompt is shown.
    virtual void ask(Awaited what, const std::string& reason, std::function<void()> giveUp) = 0;

    virtual void withdraw() = 0;
};

} // namespace quorvane::platform
