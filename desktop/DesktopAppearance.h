#pragma once

#include "platform/Appearance.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>

class QDBusMessage;

namespace quorvane::desktop {

// The look that the desktop asks for: the settings of org.freedesktop.appearance, by way of the desktop
// portal on the session bus (org.freedesktop.portal.Settings). Without such a portal or a connected bus, the
// look is light with normal contrast. User interface thread only.
class DesktopAppearance : public QObject {
    Q_OBJECT
public:
    // Queries the portal and waits for the reply at most `patience`, so that the first window has the right
    // look; a later reply counts as a change.
    explicit DesktopAppearance(
        QDBusConnection bus, std::chrono::milliseconds patience = std::chrono::milliseconds(200));

    platform::Appearance appearance() const { return m_appearance; }

Q_SIGNALS:
    void changed(platform::Appearance appearance);

private Q_SLOTS:
    // A group, a key and its value.
    void settingChanged(const QDBusMessage& message);

private:
    void take(const QString& key, const QVariant& value);
    void takeAll(const QDBusMessage& answer);

    QDBusConnection m_bus;
    platform::Appearance m_appearance;
};

} // namespace quorvane::desktop
