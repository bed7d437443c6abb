#pragma once

#include <QDBusConnection>

#include <string>

namespace quorvane::platform {
class AuthenticationPrompt;
}

namespace quorvane::desktop {

// Has polkit, over the system bus `bus`, ask for an administrator's password on behalf of this process.
// `prompt` is shown meanwhile, since the dialog is another program's, may be behind a window and may never
// come. False when it was refused, given up or cancelled, and when there is no polkit, no agent to ask, or an
// answer that makes no sense.
bool passwordCheckPassed(
    const QDBusConnection& bus, platform::AuthenticationPrompt& prompt, const std::string& reason);

} // namespace quorvane::desktop
