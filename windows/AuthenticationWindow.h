#pragma once

#include "platform/AuthenticationPrompt.h"
#include "windows/MessageWindow.h"

class QPushButton;
class QTimer;

namespace quorvane::windows {

// Shown while waiting for a finger or a password, with a button to cancel. While the password is typed in a
// window of the desktop, this one appears only after a delay and does not take the keyboard focus. User
// interface thread only.
class AuthenticationWindow : public MessageWindow, public platform::AuthenticationPrompt {
    Q_OBJECT
public:
    explicit AuthenticationWindow(const QString& iconFile);

    void ask(platform::Awaited what, const std::string& reason, std::function<void()> giveUp) override;
    void withdraw() override;

    void reject() override; // also by Escape and by closing the window

private:
    QPushButton* m_giveUpButton;
    QTimer* m_appearance;
    std::function<void()> m_giveUp; // none while the window is not shown
};

} // namespace quorvane::windows
