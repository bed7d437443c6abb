#include "desktop/DesktopAppearance.h"

#include "tests/support/FakeBusService.h"
#include "tests/support/Overtime.h"
#include "tests/support/PrivateBus.h"

#include <QDBusMetaType>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <chrono>

namespace quorvane::windows {

namespace {

using Settings = QMap<QString, QVariantMap>;

constexpr platform::Appearance darkLook{.isDark = true};
constexpr platform::Appearance lightLook{};

class DesktopAppearanceTest : public testing::Test {
protected:
    DesktopAppearanceTest()
    {
        qDBusRegisterMetaType<Settings>();
        answer({{QStringLiteral("color-scheme"), 1U}});
    }
    ~DesktopAppearanceTest() override { QDBusConnection::disconnectFromBus(QStringLiteral("client")); }

    void answer(const QVariantMap& settings)
    {
        portal.answer("ReadAll",
            {QVariant::fromValue(Settings{{QStringLiteral("org.freedesktop.appearance"), settings}})});
    }
    void change(const char* group, const char* key, const QVariant& value)
    {
        portal.emitSignal("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
            "SettingChanged",
            {QString::fromLatin1(group), QString::fromLatin1(key), QVariant::fromValue(QDBusVariant(value))});
        portal.arriveAt(client());
    }
    QDBusConnection client() const
    {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("client"));
    }

    static constexpr std::chrono::seconds patience = test::Overtime::more;

    test::PrivateBus bus;
    test::FakeBusService portal{bus.address(), QStringLiteral("org.freedesktop.portal.Desktop")};
};

} // namespace

TEST_F(DesktopAppearanceTest, IsWhatTheDesktopAsksForAtTheStart)
{
    const test::Overtime overtime;
    EXPECT_EQ(desktop::DesktopAppearance(client(), patience).appearance(), darkLook);
    EXPECT_FALSE(overtime.happened());
    const QDBusMessage question = portal.lastCall("ReadAll");
    EXPECT_EQ(question.interface(), QStringLiteral("org.freedesktop.portal.Settings"));
    EXPECT_EQ(question.path(), QStringLiteral("/org/freedesktop/portal/desktop"));
    EXPECT_EQ(question.arguments(), QVariantList{QStringList{QStringLiteral("org.freedesktop.appearance")}});
}

TEST_F(DesktopAppearanceTest, KnowsHighContrastToo)
{
    answer({{QStringLiteral("color-scheme"), 2U}, {QStringLiteral("contrast"), 1U}});
    EXPECT_EQ(desktop::DesktopAppearance(client(), patience).appearance(),
        (platform::Appearance{.hasHighContrast = true}));
}

TEST_F(DesktopAppearanceTest, FollowsTheDesktopFromThenOn)
{
    const desktop::DesktopAppearance desktop(client(), patience);
    QSignalSpy changed(&desktop, &desktop::DesktopAppearance::changed);
    change("org.freedesktop.appearance", "contrast", 1U);
    EXPECT_EQ(desktop.appearance(), (platform::Appearance{.isDark = true, .hasHighContrast = true}));
    change("org.freedesktop.appearance", "color-scheme", 0U);
    EXPECT_EQ(desktop.appearance(), (platform::Appearance{.hasHighContrast = true}));
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(DesktopAppearanceTest, SaysNothingWhenTheLookStaysOrAnotherSettingChanges)
{
    const desktop::DesktopAppearance desktop(client(), patience);
    QSignalSpy changed(&desktop, &desktop::DesktopAppearance::changed);
    change("org.freedesktop.appearance", "color-scheme", 1U);
    change("org.freedesktop.appearance", "accent-color", 1U);
    change("org.example.appearance", "color-scheme", 0U);
    EXPECT_EQ(changed.size(), 0);
    EXPECT_EQ(desktop.appearance(), darkLook);
}

TEST_F(DesktopAppearanceTest, IgnoresChangesThatMakeNoSense)
{
    const desktop::DesktopAppearance desktop(client(), patience);
    const QString group = QStringLiteral("org.freedesktop.appearance");
    for (const QVariantList& values : {QVariantList(), QVariantList{group},
             QVariantList{group, QStringLiteral("color-scheme"), QStringLiteral("0")}}) {
        portal.emitSignal(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged", values);
        portal.arriveAt(client());
    }
    EXPECT_EQ(desktop.appearance(), darkLook);
}

TEST_F(DesktopAppearanceTest, IsLightWhereTheAnswerIsOfAnotherKind)
{
    answer({{QStringLiteral("color-scheme"), QStringLiteral("1")}});
    EXPECT_EQ(desktop::DesktopAppearance(client(), patience).appearance(), lightLook);
    for (const QVariantList& values : {QVariantList{QStringLiteral("dark")}, QVariantList()}) {
        portal.answer("ReadAll", values);
        EXPECT_EQ(desktop::DesktopAppearance(client(), patience).appearance(), lightLook);
    }
    portal.fail("ReadAll", "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(desktop::DesktopAppearance(client(), patience).appearance(), lightLook);
}

TEST_F(DesktopAppearanceTest, IsLightWithoutPortalOrBus)
{
    portal.vanish();
    EXPECT_EQ(desktop::DesktopAppearance(client(), patience).appearance(), lightLook);
    const test::Overtime overtime;
    EXPECT_EQ(desktop::DesktopAppearance(QDBusConnection(QStringLiteral("none")), patience).appearance(),
        lightLook);
    EXPECT_FALSE(overtime.happened());
}

TEST_F(DesktopAppearanceTest, TakesAnAnswerThatComesLateAsAChange)
{
    QDBusMessage question;
    portal.methods["ReadAll"] = [&](const QDBusMessage& call) { question = call; };
    const desktop::DesktopAppearance desktop(client(), std::chrono::milliseconds(0));
    QSignalSpy changed(&desktop, &desktop::DesktopAppearance::changed);
    EXPECT_EQ(desktop.appearance(), lightLook);
    ASSERT_TRUE(QTest::qWaitFor([&] { return question.type() == QDBusMessage::MethodCallMessage; }));
    portal.reply(question,
        {QVariant::fromValue(Settings{
            {QStringLiteral("org.freedesktop.appearance"), {{QStringLiteral("color-scheme"), 1U}}}})});
    EXPECT_TRUE(QTest::qWaitFor([&] { return changed.size() == 1; }));
    EXPECT_EQ(desktop.appearance(), darkLook);
}

} // namespace quorvane::windows
