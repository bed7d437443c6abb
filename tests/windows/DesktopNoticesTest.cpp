#include "desktop/DesktopNotices.h"

#include "tests/support/FakeBusService.h"
#include "tests/support/Overtime.h"
#include "tests/support/PrivateBus.h"

#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace quorvane::windows {

namespace {

constexpr const char* objectPath = "/org/freedesktop/Notifications";
constexpr const char* interface = "org.freedesktop.Notifications";
constexpr uint noticeNumber = 7;

class NoticesTest : public testing::Test {
protected:
    NoticesTest()
    {
        service.offer(objectPath, interface);
        service.answer("GetCapabilities", {QStringList{QStringLiteral("body")}});
        service.answer("Notify", {noticeNumber});
    }
    ~NoticesTest() override { QDBusConnection::disconnectFromBus(QStringLiteral("client")); }

    void show(const platform::DesktopNotice& notice = {"Header", "Message", ""})
    {
        notices.show(notice, [this](platform::NoticeEnd how) { end = how; });
    }
    bool isShown() const
    {
        return QTest::qWaitFor([this] { return service.calls.contains(QStringLiteral("Notify")); });
    }
    bool hasEnded() const
    {
        return QTest::qWaitFor([this] { return end.has_value(); });
    }
    QVariant argument(int position) const { return service.lastCall("Notify").arguments().at(position); }
    test::PrivateBus bus;
    test::FakeBusService service{bus.address(), QLatin1String(interface)};
    desktop::DesktopNotices notices{
        QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("client")),
        test::Overtime::more};
    std::optional<platform::NoticeEnd> end;
};

} // namespace

TEST_F(NoticesTest, HaveTheirTextsAndAnOkButtonForAMinute)
{
    show({"Header", "Message", "/nonexistent/lock.png"});
    ASSERT_TRUE(isShown());

    const QDBusMessage call = service.lastCall("Notify");
    EXPECT_EQ(call.signature(), QStringLiteral("susssasa{sv}i"));
    EXPECT_EQ(argument(0), QStringLiteral("Quorvane Configuration"));
    EXPECT_EQ(argument(1), 0U) << "replaces no other notice";
    EXPECT_EQ(argument(3), QStringLiteral("Header"));
    EXPECT_EQ(argument(4), QStringLiteral("Message"));
    EXPECT_EQ(argument(5).toStringList(), (QStringList{QStringLiteral("default"), QStringLiteral("OK")}));
    EXPECT_EQ(argument(7), 60000) << "milliseconds";
}

TEST_F(NoticesTest, ShowTheirIconByItsAddressOrElseOneOfTheDesktops)
{
    const test::TemporaryFolder folder;
    show({"", "", folder.write("Application Support/lock.png", "picture")});
    ASSERT_TRUE(isShown());
    EXPECT_EQ(
        argument(2).toString().toStdString(), "file://" + folder.path("Application%20Support/lock.png"));

    service.calls.clear();
    show({"", "", "/nonexistent/lock.png"});
    ASSERT_TRUE(isShown());
    EXPECT_EQ(argument(2), QStringLiteral("system-lock-screen"));
}

TEST_F(NoticesTest, EscapeTheMessageOnlyForAServiceThatReadsMarkup)
{
    const platform::DesktopNotice notice{"<h> & \"", "<b> & \" > &amp;", ""};
    show(notice);
    ASSERT_TRUE(isShown());
    EXPECT_EQ(argument(4), QStringLiteral("<b> & \" > &amp;"));

    service.calls.clear();
    service.answer(
        "GetCapabilities", {QStringList{QStringLiteral("actions"), QStringLiteral("body-markup")}});
    show(notice);
    ASSERT_TRUE(isShown());
    EXPECT_EQ(argument(4), QStringLiteral("&lt;b&gt; &amp; \" &gt; &amp;amp;"));
    EXPECT_EQ(argument(3), QStringLiteral("<h> & \"")) << "the header is never markup";
}

TEST_F(NoticesTest, EndWithTheButtonOrByBeingClosed)
{
    const struct {
        const char* signal;
        QVariant second;
    } cases[] = {{"ActionInvoked", QStringLiteral("default")}, {"NotificationClosed", 2U}};
    for (const auto& c : cases) {
        end.reset();
        service.calls.clear();
        show();
        ASSERT_TRUE(isShown());
        service.emitSignal(objectPath, interface, c.signal, {noticeNumber, c.second});
        ASSERT_TRUE(hasEnded()) << c.signal;
        EXPECT_EQ(end, platform::NoticeEnd::closed) << c.signal;
    }
}

TEST_F(NoticesTest, DoNotEndWithAnothersAnswer)
{
    test::FakeBusService stranger(bus.address(), {});
    show();
    ASSERT_TRUE(isShown());
    service.emitSignal(objectPath, interface, "NotificationClosed", {noticeNumber + 1, 2U});
    service.emitSignal(objectPath, interface, "NotificationClosed", {});
    service.emitSignal(objectPath, interface, "NotificationClosed", {QStringLiteral("7"), 2U});
    stranger.emitSignal(objectPath, interface, "NotificationClosed", {noticeNumber, 2U});
    const QDBusConnection client(QStringLiteral("client"));
    service.arriveAt(client);
    stranger.arriveAt(client);
    EXPECT_FALSE(end);
}

TEST_F(NoticesTest, EndWhenTheServiceGoesAway)
{
    show();
    ASSERT_TRUE(isShown());
    service.vanish();
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(end, platform::NoticeEnd::closed);
}

TEST_F(NoticesTest, EndAllWhenTheServiceGoesAway)
{
    int ended = 0;
    for (uint number = 0; number < 3; ++number) {
        service.calls.clear();
        service.answer("Notify", {number});
        notices.show({"Header", "Message", ""}, [&ended](platform::NoticeEnd /*how*/) { ++ended; });
        ASSERT_TRUE(isShown());
    }
    service.arriveAt(QDBusConnection(QStringLiteral("client")));
    service.vanish();
    EXPECT_TRUE(QTest::qWaitFor([&ended] { return ended == 3; }));
}

TEST_F(NoticesTest, AreUndeliverableWhenTheServiceFails)
{
    const struct {
        const char* why;
        std::function<void()> prepare;
    } cases[] = {
        {"an error at the first question", [this] { service.fail("GetCapabilities", "org.example.No"); }},
        {"another answer than promised", [this] { service.answer("GetCapabilities", {7}); }},
        {"no answer values", [this] { service.answer("GetCapabilities", {}); }},
        {"an error at the notice itself", [this] { service.fail("Notify", "org.example.No"); }},
        {"another number than promised", [this] { service.answer("Notify", {QStringLiteral("x")}); }},
        {"ends in mid-call", [this] { service.vanishAt("Notify"); }},
        {"is gone", [] {}}, // after the one before
    };
    for (const auto& c : cases) {
        service.answer("GetCapabilities", {QStringList()});
        service.answer("Notify", {noticeNumber});
        c.prepare();
        end.reset();
        show();
        ASSERT_TRUE(hasEnded()) << c.why;
        EXPECT_EQ(end, platform::NoticeEnd::undeliverable) << c.why;
    }
}

TEST_F(NoticesTest, AreUndeliverableWhenTheServiceIsSilent)
{
    for (const char* silent : {"Notify", "GetCapabilities"}) {
        service.methods.erase(silent);
        desktop::DesktopNotices impatient(
            QDBusConnection(QStringLiteral("client")), std::chrono::milliseconds(50));
        end.reset();
        impatient.show({}, [this](platform::NoticeEnd how) { end = how; });
        EXPECT_FALSE(end) << "never before it returns";
        ASSERT_TRUE(hasEnded()) << silent;
        EXPECT_EQ(end, platform::NoticeEnd::undeliverable) << silent;
    }
}

TEST_F(NoticesTest, AreUndeliverableWithoutABus)
{
    desktop::DesktopNotices unconnected(QDBusConnection(QStringLiteral("no such connection")));
    unconnected.show({}, [this](platform::NoticeEnd how) { end = how; });
    EXPECT_FALSE(end) << "never before it returns";
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(end, platform::NoticeEnd::undeliverable);

    bus.end();
    end.reset();
    show();
    ASSERT_TRUE(hasEnded()) << "the bus has ended";
    EXPECT_EQ(end, platform::NoticeEnd::undeliverable);
}

TEST_F(NoticesTest, AreHandedOverBeforeTheProgramEnds)
{
    show({"first", "", ""});
    show({"second", "", ""});
    const test::Overtime overtime;
    notices.finish();
    EXPECT_FALSE(overtime.happened());
    EXPECT_EQ(service.calls.count(QStringLiteral("Notify")), 2);
}

TEST_F(NoticesTest, DoNotKeepTheProgramFromEnding)
{
    const test::Overtime overtime;
    notices.finish();
    EXPECT_FALSE(overtime.happened()) << "there is nothing to wait for";
    service.methods.clear();
    desktop::DesktopNotices impatient(
        QDBusConnection(QStringLiteral("client")), std::chrono::milliseconds(50));
    impatient.show({}, [this](platform::NoticeEnd how) { end = how; });
    impatient.finish();
    EXPECT_EQ(end, platform::NoticeEnd::undeliverable);
    EXPECT_FALSE(overtime.happened());
}

} // namespace quorvane::windows
