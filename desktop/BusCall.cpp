#include "desktop/BusCall.h"

#include "desktop/InputLock.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

namespace quorvane::desktop {

namespace {

QString nextConnectionName()
{
    static int count = 0;
    return QStringLiteral("quorvane-%1").arg(++count);
}

} // namespace

QDBusMessage answerTo(const QDBusMessage& call, const QDBusConnection& bus,
    std::chrono::milliseconds patience, QEventLoop& wait)
{
    const QDBusPendingCallWatcher watcher(bus.asyncCall(call, static_cast<int>(patience.count())));
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &wait, &QEventLoop::quit);
    const InputLock lock;
    if (!watcher.isFinished())
        wait.exec();
    return watcher.isFinished() ? watcher.reply() : QDBusMessage::createError(QDBusError::NoReply, QString());
}

QDBusMessage answerTo(
    const QDBusMessage& call, const QDBusConnection& bus, std::chrono::milliseconds patience)
{
    QEventLoop wait;
    return answerTo(call, bus, patience, wait);
}

BusConnection::BusConnection(const std::string& address, std::chrono::milliseconds patience)
    : m_name(nextConnectionName())
{
    // Connecting blocks until the bus's first reply, so it is done on another thread. Until then any lookup
    // of a connection by its name blocks as well.
    QThread* thread = QThread::create([address = QString::fromStdString(address), name = m_name] {
        QDBusConnection::connectToBus(address, name);
    });
    QEventLoop wait;
    QObject::connect(thread, &QThread::finished, &wait, [this, &wait] {
        m_connected = true;
        wait.quit();
    });
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    QTimer::singleShot(patience, &wait, &QEventLoop::quit);
    const InputLock lock;
    thread->start();
    wait.exec();
}

BusConnection::~BusConnection()
{
    if (m_connected)
        QDBusConnection::disconnectFromBus(m_name);
}

QDBusConnection BusConnection::bus() const
{
    return QDBusConnection(m_connected ? m_name : QString());
}

} // namespace quorvane::desktop
