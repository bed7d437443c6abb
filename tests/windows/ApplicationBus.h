#pragma once

#include "desktop/ApplicationService.h"
#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvane::test {

// A bus over which a desktop asks for the program.
class ApplicationBus {
public:
    ApplicationBus() = default;
    ~ApplicationBus()
    {
        for (const char* name : {"service", "client"})
            QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
    }
    ApplicationBus(const ApplicationBus&) = delete;
    ApplicationBus& operator=(const ApplicationBus&) = delete;

    // For the program.
    QDBusConnection service() const { return connection("service"); }
    // For the desktop.
    QDBusConnection client() const { return connection("client"); }

    // Returns when there is a reply.
    void ask(const char* method, QVariantList arguments, const QVariantMap& platformData = {}) const
    {
        arguments.append(platformData);
        auto call = QDBusMessage::createMethodCall(QString::fromLatin1(desktop::ApplicationService::name),
            QStringLiteral("/com/vantreal/quorvane/configuration"),
            QStringLiteral("org.freedesktop.Application"), QString::fromLatin1(method));
        call.setArguments(arguments);
        const QDBusPendingCall pending = client().asyncCall(call);
        EXPECT_TRUE(QTest::qWaitFor([&] { return pending.isFinished(); }));
        EXPECT_FALSE(pending.isError()) << pending.error().message().toStdString();
    }

private:
    QDBusConnection connection(const char* name) const
    {
        return QDBusConnection::connectToBus(
            QString::fromStdString(m_bus.address()), QString::fromLatin1(name));
    }

    const PrivateBus m_bus;
};

} // namespace quorvane::test
