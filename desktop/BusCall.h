#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <chrono>
#include <limits>
#include <string>

class QEventLoop;

// Calls over D-Bus that wait for their answer without holding up the windows: in a local event loop, in which
// windows are painted but take no input. User interface thread only.

namespace quorvane::desktop {

// For calls that a person answers.
constexpr std::chrono::milliseconds forever{std::numeric_limits<int>::max()};

// The answer to `call`: an error when there is no bus or service, the service goes away in mid-call or stays
// silent for `patience`, and when the program is told to end. Quitting `wait` gives the call up, which is an
// error as well.
QDBusMessage answerTo(
    const QDBusMessage& call, const QDBusConnection& bus, std::chrono::milliseconds patience);
QDBusMessage answerTo(const QDBusMessage& call, const QDBusConnection& bus,
    std::chrono::milliseconds patience, QEventLoop& wait);

// A connection of its own to a bus, for as long as the object lives. A service notices when it goes away.
class BusConnection {
public:
    // Waits until it stands, at most `patience`. A bus that cannot be reached gives a connection whose calls
    // all fail.
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
