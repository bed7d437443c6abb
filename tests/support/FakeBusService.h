#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

namespace quorvane::test {

// A bus service with configured replies. It lives in the test's thread: code that blocked that thread while
// waiting for a reply would never get one.
class FakeBusService : public QDBusVirtualObject {
public:
    // `name` is the well-known name; empty for a service that has only its unique name.
    FakeBusService(const std::string& address, const QString& name)
        : m_connectionName(QStringLiteral("fake-service-%1").arg(++s_count))
        , m_bus(QDBusConnection::connectToBus(QString::fromStdString(address), m_connectionName))
    {
        EXPECT_TRUE(m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath));
        EXPECT_TRUE(name.isEmpty() || m_bus.registerService(name));
    }
    ~FakeBusService() override { vanish(); }

    // Disconnects like a program that ends; pending calls get an error from the bus.
    void vanish()
    {
        m_bus = QDBusConnection(QString()); // the connection stays open while it is referenced
        QDBusConnection::disconnectFromBus(m_connectionName);
    }

    // From now on, calls of other objects and interfaces are refused.
    void offer(const char* path, const char* interface) { m_offered[path] = interface; }

    // The handler of each method. Other methods get no reply.
    std::map<std::string, std::function<void(const QDBusMessage&)>> methods;

    void answer(const char* method, const QVariantList& values)
    {
        methods[method] = [this, values](const QDBusMessage& call) { reply(call, values); };
    }
    void fail(const char* method, const char* error)
    {
        methods[method] = [this, error](const QDBusMessage& call) {
            m_bus.send(call.createErrorReply(QLatin1String(error), QStringLiteral("no")));
        };
    }
    void vanishAt(const char* method)
    {
        methods[method] = [this](const QDBusMessage&) { vanish(); };
    }

    void reply(const QDBusMessage& call, const QVariantList& values) { m_bus.send(call.createReply(values)); }
    void emitSignal(const char* path, const char* interface, const char* name, const QVariantList& values)
    {
        QDBusMessage signal
            = QDBusMessage::createSignal(QLatin1String(path), QLatin1String(interface), QLatin1String(name));
        signal.setArguments(values);
        m_bus.send(signal);
    }

    // Waits until everything this service has sent so far has reached `client`.
    void arriveAt(const QDBusConnection& client)
    {
        answer("Arrive", {});
        const QDBusPendingCall call = client.asyncCall(QDBusMessage::createMethodCall(
            m_bus.baseService(), QStringLiteral("/"), {}, QStringLiteral("Arrive")));
        EXPECT_TRUE(QTest::qWaitFor([&] { return call.isFinished(); }));
        QCoreApplication::processEvents();
    }

    // The names of the methods called so far.
    QStringList calls;
    QDBusMessage lastCall(const char* method) const { return m_lastCalls.at(method); }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override
    {
        calls.append(message.member());
        const std::string method = message.member().toStdString();
        m_lastCalls[method] = message;
        message.setDelayedReply(true);
        if (!isOffered(message))
            return m_bus.send(message.createErrorReply(QDBusError::UnknownInterface, QStringLiteral("no")));
        if (const auto known = methods.find(method); known != methods.end())
            known->second(message);
        return true;
    }
    QString introspect(const QString& /*path*/) const override { return {}; }

private:
    // The test's own calls have no interface.
    bool isOffered(const QDBusMessage& call) const
    {
        const auto object = m_offered.find(call.path().toStdString());
        return m_offered.empty() || call.interface().isEmpty()
            || (object != m_offered.end() && object->second == call.interface().toStdString());
    }

    inline static int s_count = 0;

    const QString m_connectionName;
    QDBusConnection m_bus;
    std::map<std::string, QDBusMessage> m_lastCalls;
    std::map<std::string, std::string> m_offered; // interfaces by object
};

} // namespace quorvane::test
