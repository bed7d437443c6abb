#include "desktop/FingerprintReader.h"

#include "desktop/BusCall.h"
#include "desktop/InputLock.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>

#include <utility>

namespace quorvane::desktop {

namespace {

QString deviceInterface()
{
    return QStringLiteral("net.reactivated.Fprint.Device");
}

bool isReply(const QDBusMessage& answer, const char* signature)
{
    return answer.type() == QDBusMessage::ReplyMessage && answer.signature() == QLatin1String(signature);
}

} // namespace

FingerprintReader::FingerprintReader(
    QDBusConnection bus, platform::AuthenticationPrompt& prompt, std::chrono::milliseconds patience)
    : m_bus(std::move(bus))
    , m_prompt(prompt)
    , m_patience(patience)
{
}

bool FingerprintReader::verify(const std::string& reason)
{
    if (!findDevice() || !hasEnrolledFingers())
        return false;
    const bool claimed = isReply(call(QStringLiteral("Claim"), {QString()}), "");
    const bool recognised = claimed && awaitFinger(reason);
    // Also after a failed claim: it may have succeeded after the time-out.
    call(QStringLiteral("Release"));
    return recognised;
}

bool FingerprintReader::findDevice()
{
    const QString service = QStringLiteral("net.reactivated.Fprint");
    const QDBusMessage answer
        = answerTo(QDBusMessage::createMethodCall(service, QStringLiteral("/net/reactivated/Fprint/Manager"),
                       service + QStringLiteral(".Manager"), QStringLiteral("GetDefaultDevice")),
            m_bus, m_patience);
    if (!isReply(answer, "o"))
        return false;
    m_service = answer.service();
    m_device = answer.arguments().at(0).value<QDBusObjectPath>().path();
    return true;
}

bool FingerprintReader::hasEnrolledFingers()
{
    const QDBusMessage answer = call(QStringLiteral("ListEnrolledFingers"), {QString()});
    return isReply(answer, "as") && !answer.arguments().at(0).toStringList().isEmpty();
}

bool FingerprintReader::awaitFinger(const std::string& reason)
{
    m_reason = reason;
    m_bus.connect(m_service, m_device, deviceInterface(), QStringLiteral("VerifyStatus"), this,
        SLOT(verifyStatus(QDBusMessage)));
    // Of a bus that goes away, the watcher of the service says nothing.
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
        SLOT(serviceVanished()));
    const QDBusServiceWatcher service(m_service, m_bus, QDBusServiceWatcher::WatchForUnregistration);
    connect(&service, &QDBusServiceWatcher::serviceUnregistered, this, &FingerprintReader::serviceVanished);

    ask(platform::Awaited::finger);
    if (isReply(call(QStringLiteral("VerifyStart"), {QStringLiteral("any")}), "") && !m_recognised) {
        const InputLock lock;
        m_wait.exec();
    }
    m_prompt.withdraw();
    call(QStringLiteral("VerifyStop"));
    return m_recognised.value_or(false);
}

void FingerprintReader::ask(platform::Awaited what)
{
    m_prompt.ask(what, m_reason, [this] { conclude(false); });
}

void FingerprintReader::verifyStatus(const QDBusMessage& message)
{
    if (message.signature() != QStringLiteral("sb"))
        return;
    const QString status = message.arguments().at(0).toString();
    const bool isOver = message.arguments().at(1).toBool();
    if (status == QStringLiteral("verify-match"))
        conclude(true);
    else if (isOver || status == QStringLiteral("verify-no-match")
        || status == QStringLiteral("verify-disconnected")
        || status == QStringLiteral("verify-unknown-error"))
        conclude(false);
    else if (!m_recognised) // badly placed, lifted too soon, and the like
        ask(platform::Awaited::fingerAgain);
}

void FingerprintReader::serviceVanished()
{
    conclude(false);
}

void FingerprintReader::conclude(bool recognised)
{
    if (!m_recognised) // the first result counts
        m_recognised = recognised;
    m_wait.quit();
}

QDBusMessage FingerprintReader::call(const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, m_device, deviceInterface(), method);
    message.setArguments(arguments);
    if (m_silent) {
        m_bus.send(message);
        return QDBusMessage::createError(QDBusError::NoReply, QString());
    }
    QDBusMessage answer = answerTo(message, m_bus, m_patience);
    m_silent = QDBusError(answer).type() == QDBusError::NoReply;
    return answer;
}

} // namespace quorvane::desktop
