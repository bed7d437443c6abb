#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <chrono>
#include <limits>
#include <string>

class QEventLoop;

// D-Bus calls that wait for their reply in a local event loop, in which windows are painted but take no
// input. User interface thread only.

namespace quorvane::desktop {

// For calls that wait for the user.
constexpr std::chrono::milliseconds forever{std::numeric_limits<int>::max()};

// The reply to `call`: an error when there is no bus or service, when the service vanishes during the call or
// does not reply within `patience`, and when the program is asked to end. Quitting `wait` abandons the call,
// which is an error as well.
QDBusMessage answerTo(
    const QDBusMessage& call, const QDBusConnection& bus, std::chrono::milliseconds patience);
QDBusMessage answerTo(const QDBusMessage& call, const QDBusConnection& bus,
    std::chrono::milliseconds patience, QEventLoop& wait);

// A separate connection to a bus for the lifetime of the object, so that services notice when it ends.
class BusConnection {
public:
    // Waits until it is connected, at most `patience`. If the bus cannot be reached, all calls on the
    // connection fail.
    BusConnection(const std::string& address, std::chrono::milliseconds patience);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    QDBusConnection bus() const;

private:
    const QString m_name;
    bool m_connected = false;
};

} // namespace quorvane::desktop
