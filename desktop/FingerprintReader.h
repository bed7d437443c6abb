#pragma once

#include "platform/AuthenticationPrompt.h"

#include <QDBusConnection>
#include <QEventLoop>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <optional>
#include <string>

class QDBusMessage;

namespace quorvane::desktop {

// The fingerprint reader of the machine, by way of fprintd on the system bus `bus`. For one check. User
// interface thread only.
class FingerprintReader : public QObject {
    Q_OBJECT
public:
    // `prompt` must outlive it. `patience` is how long the service may take for steps that do not wait for
    // the user.
    FingerprintReader(
        QDBusConnection bus, platform::AuthenticationPrompt& prompt, std::chrono::milliseconds patience);

    // Whether a finger of this user was recognised. False at once when there is no reader, it is in use, or
    // no finger is enrolled. Waits for a finger without a time limit, until the user cancels; the reader is
    // released in any case.
    bool verify(const std::string& reason);

private Q_SLOTS:
    void verifyStatus(const QDBusMessage& message);
    void serviceVanished();

private:
    bool findDevice();
    bool hasEnrolledFingers();
    bool awaitFinger(const std::string& reason);
    void ask(platform::Awaited what);
    void conclude(bool recognised);
    QDBusMessage call(const QString& method, const QVariantList& arguments = {});

    QDBusConnection m_bus;
    platform::AuthenticationPrompt& m_prompt;
    const std::chrono::milliseconds m_patience;
    QString m_service; // its unique bus name: a successor process would know nothing of this check
    QString m_device; // object path of the reader
    std::string m_reason;
    std::optional<bool> m_recognised; // once the check is over
    bool m_silent = false; // a call timed out: do not wait for the service again
    QEventLoop m_wait;
};

} // namespace quorvane::desktop
