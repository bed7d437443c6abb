#pragma once

#include "platform/Notices.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <chrono>
#include <map>
#include <utility>

class QDBusMessage;

namespace quorvane::desktop {

// Notices by way of org.freedesktop.Notifications on the session bus `bus`, which may be one that is not
// connected. A service that is missing, fails, or does not reply within `patience` makes a notice
// undeliverable.
class DesktopNotices : public QObject, public platform::Notices {
    Q_OBJECT
public:
    explicit DesktopNotices(
        QDBusConnection bus, std::chrono::milliseconds patience = std::chrono::seconds(3));

    void show(const platform::DesktopNotice& notice, std::function<void(platform::NoticeEnd)> ended) override;
    void finish() override;

Q_SIGNALS:
    void handedOver(); // no notice is being sent any more

private Q_SLOTS:
    // The service's signals; both, button pressed and notice closed, begin with the notice's number.
    void answered(const QDBusMessage& message);

private:
    using Ended = std::function<void(platform::NoticeEnd)>;
    using NoticeKey
        = std::pair<QString, uint>; // the service's own name on the bus, and its number for the notice

    void notify(const platform::DesktopNotice& notice, bool readsMarkup, const Ended& ended);
    void call(const QString& method, const QVariantList& arguments,
        const std::function<void(const QDBusMessage&)>& answer);
    void end(const NoticeKey& key);
    void serviceChanged(const QString& name, const QString& oldOwner);

    QDBusConnection m_bus;
    const std::chrono::milliseconds m_patience;
    QDBusServiceWatcher m_services;
    std::map<NoticeKey, Ended> m_shown;
    int m_calls = 0; // that await a reply
};

} // namespace quorvane::desktop
