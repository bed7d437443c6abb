#include "desktop/ApplicationService.h"

#include "platform/FileUri.h"

#include <QDBusConnectionInterface>

#include <cstdlib>

namespace quorvane::desktop {

namespace {

// Set in the bus's service file.
constexpr const char* startedByBus = "QUORVANE_STARTED_BY_BUS";

QString objectPath()
{
    return QLatin1Char('/')
        + QString::fromLatin1(ApplicationService::name).replace(QLatin1Char('.'), QLatin1Char('/'));
}

// The compositor raises a window only for a click whose token it is given; the toolkit reads the token from
// the environment.
void takeActivationToken(const QVariantMap& platformData)
{
    const QByteArray token = platformData.value(QStringLiteral("activation-token")).toString().toUtf8();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
}

} // namespace

bool ApplicationService::wasStartedByBus()
{
    const bool answer = std::getenv(startedByBus) != nullptr;
    unsetenv(startedByBus);
    return answer;
}

bool ApplicationService::start(const QDBusConnection& bus)
{
    QDBusConnection connection = bus;
    return connection.registerObject(objectPath(), QStringLiteral("org.freedesktop.Application"), this,
               QDBusConnection::ExportScriptableSlots)
        && connection.registerService(QString::fromLatin1(name));
}

void ApplicationService::Activate(const QVariantMap& platformData)
{
    takeActivationToken(platformData);
    Q_EMIT activated();
}

void ApplicationService::Open(const QStringList& uris, const QVariantMap& platformData)
{
    takeActivationToken(platformData);
    std::vector<std::string> paths;
    for (const QString& uri : uris) {
        if (auto path = platform::pathOfFileUri(uri.toStdString()))
            paths.push_back(std::move(*path));
    }
    Q_EMIT filesWereOpened(paths);
}

void ApplicationService::ActivateAction(
    const QString& action, const QVariantList& /*parameter*/, const QVariantMap& platformData)
{
    takeActivationToken(platformData);
    Q_EMIT actionWasChosen(action);
}

} // namespace quorvane::desktop
