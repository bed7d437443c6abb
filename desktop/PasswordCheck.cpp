#include "desktop/PasswordCheck.h"

#include "desktop/BusCall.h"
#include "platform/AuthenticationPrompt.h"
#include "platform/Processes.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QEventLoop>
#include <QMap>
#include <QVariantMap>

#include <unistd.h>

namespace quorvane::desktop {

namespace {

using Details = QMap<QString, QString>;

QDBusMessage callOf(const QString& method)
{
    const QString name = QStringLiteral("org.freedesktop.PolicyKit1");
    return QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
        name + QStringLiteral(".Authority"), method);
}

// Identifies this process by its start time as well, since its number may be reused.
QVariant thisProcess()
{
    QDBusArgument subject;
    subject.beginStructure();
    subject << QStringLiteral("unix-process")
            << QVariantMap{
                   {QStringLiteral("pid"), static_cast<uint>(getpid())},
                   {QStringLiteral("start-time"),
                       static_cast<qulonglong>(platform::startTimeOfProcess(getpid()).value_or(0))},
                   {QStringLiteral("uid"), static_cast<int>(getuid())},
               };
    subject.endStructure();
    return QVariant::fromValue(subject);
}

bool isGranted(const QDBusMessage& answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QStringLiteral("(bba{ss})"))
        return false;
    const auto result = answer.arguments().at(0).value<QDBusArgument>();
    bool granted = false;
    result.beginStructure();
    result >> granted;
    result.endStructure();
    return granted;
}

} // namespace

bool passwordCheckPassed(
    const QDBusConnection& bus, platform::AuthenticationPrompt& prompt, const std::string& reason)
{
    qDBusRegisterMetaType<Details>();
    static int count = 0;
    const QString cancellation = QStringLiteral("quorvane-%1-%2").arg(getpid()).arg(++count);
    constexpr uint allowUserInteraction = 1;
    const QString action = QStringLiteral("vantreal.quorvane.system.privilege.admin");
    QDBusMessage call = callOf(QStringLiteral("CheckAuthorization"));
    call << thisProcess() << action << QVariant::fromValue(Details()) << allowUserInteraction << cancellation;

    QEventLoop wait;
    prompt.ask(platform::Awaited::password, reason, [&wait] { wait.quit(); });
    const QDBusMessage answer = answerTo(call, bus, forever, wait);
    prompt.withdraw();
    if (answer.type() == QDBusMessage::ReplyMessage)
        return isGranted(answer);
    // Closes the dialog when the user cancelled in our prompt.
    QDBusMessage cancel = callOf(QStringLiteral("CancelCheckAuthorization"));
    bus.send(cancel << cancellation);
    return false;
}

} // namespace quorvane::desktop
