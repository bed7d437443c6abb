#pragma once

#include <QDBusConnection>

#include <string>

namespace quorvane::platform {
class AuthenticationPrompt;
}

namespace quorvane::desktop {

// Makes polkit, over the system bus `bus`, ask for an administrator's password on behalf of this process.
// `prompt` is shown while waiting, since the dialog belongs to another program, may be hidden behind a window
// and may never appear. False when it was refused or cancelled, and when there is no polkit, no agent to ask,
// or a malformed reply. User interface thread only.
bool passwordCheckPassed(
    const QDBusConnection& bus, platform::AuthenticationPrompt& prompt, const std::string& reason);

} // namespace quorvane::desktop
