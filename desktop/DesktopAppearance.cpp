#include "desktop/DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTimer>

#include <utility>

namespace quorvane::desktop {

namespace {

constexpr QLatin1String portal("org.freedesktop.portal.Desktop");
constexpr QLatin1String portalPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String settingsInterface("org.freedesktop.portal.Settings");
constexpr QLatin1String appearanceGroup("org.freedesktop.appearance");

using Settings = QMap<QString, QVariantMap>; // by group and key

} // namespace

DesktopAppearance::DesktopAppearance(QDBusConnection bus, std::chrono::milliseconds patience)
    : m_bus(std::move(bus))
{
    m_bus.connect(portal, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
        SLOT(settingChanged(QDBusMessage)));
    QDBusMessage question
        = QDBusMessage::createMethodCall(portal, portalPath, settingsInterface, QStringLiteral("ReadAll"));
    question.setArguments({QStringList{appearanceGroup}});
    auto* answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    QEventLoop wait;
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] { takeAll(answer->reply()); });
    connect(answer, &QDBusPendingCallWatcher::finished, &wait, &QEventLoop::quit);
    QTimer::singleShot(patience, &wait, &QEventLoop::quit);
    if (!answer->isFinished())
        wait.exec(QEventLoop::ExcludeUserInputEvents);
}

void DesktopAppearance::takeAll(const QDBusMessage& answer)
{
    if (answer.signature() != QLatin1String("a{sa{sv}}"))
        return;
    const auto settings = qdbus_cast<Settings>(answer.arguments().constFirst()).value(appearanceGroup);
    for (auto setting = settings.cbegin(); setting != settings.cend(); ++setting)
        take(setting.key(), setting.value());
}

void DesktopAppearance::settingChanged(const QDBusMessage& message)
{
    if (message.signature() != QLatin1String("ssv"))
        return;
    const QVariantList arguments = message.arguments();
    if (arguments.at(0).toString() == appearanceGroup)
        take(arguments.at(1).toString(), arguments.at(2).value<QDBusVariant>().variant());
}

// Each setting is on when its value is 1 and off for anything else, a value of another type included.
void DesktopAppearance::take(const QString& key, const QVariant& value)
{
    const bool isAskedFor = value.typeId() == QMetaType::UInt && value.toUInt() == 1;
    platform::Appearance appearance = m_appearance;
    if (key == QLatin1String("color-scheme"))
        appearance.isDark = isAskedFor;
    else if (key == QLatin1String("contrast"))
        appearance.hasHighContrast = isAskedFor;
    if (appearance == m_appearance)
        return;
    m_appearance = appearance;
    Q_EMIT changed(appearance);
}

} // namespace quorvane::desktop
