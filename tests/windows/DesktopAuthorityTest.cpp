#include "desktop/DesktopAuthority.h"

#include "platform/AuthenticationPrompt.h"
#include "platform/Processes.h"
#include "tests/support/FakeBusService.h"
#include "tests/support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QTimer>

#include <gtest/gtest.h>

#include <unistd.h>

namespace quorvane::windows {

namespace {

constexpr const char* device = "/net/reactivated/Fprint/Device/0";
constexpr const char* deviceInterface = "net.reactivated.Fprint.Device";

// Notes what is asked, and then does what the test says.
class FakePrompt : public platform::AuthenticationPrompt {
public:
    void ask(platform::Awaited what, const std::string& reason, std::function<void()> giveUp) override
    {
        EXPECT_EQ(reason, "verify authorization");
        asked.push_back(what);
        shown = true;
        if (givesUp)
            QTimer::singleShot(0, QCoreApplication::instance(), giveUp);
        if (what == platform::Awaited::fingerAgain && afterAskingAgain)
            QTimer::singleShot(0, QCoreApplication::instance(), afterAskingAgain);
    }
    void withdraw() override { shown = false; }

    std::vector<platform::Awaited> asked;
    bool shown = false;
    bool givesUp = false;
    std::function<void()> afterAskingAgain{};
};

class AuthorityTest : public testing::Test {
protected:
    ~AuthorityTest() override { EXPECT_FALSE(prompt.shown) << "the prompt stays behind"; }

    test::PrivateBus bus;
    FakePrompt prompt;
    desktop::DesktopAuthority authority{bus.address(), prompt};
};

class FingerprintTest : public AuthorityTest {
protected:
    FingerprintTest() { prepare(service); }

    // A reader with an enrolled finger.
    static void prepare(test::FakeBusService& fprintd)
    {
        fprintd.offer("/net/reactivated/Fprint/Manager", "net.reactivated.Fprint.Manager");
        fprintd.offer(device, deviceInterface);
        fprintd.answer("GetDefaultDevice", {QVariant::fromValue(QDBusObjectPath(QLatin1String(device)))});
        fprintd.answer("ListEnrolledFingers", {QStringList{QStringLiteral("right-index-finger")}});
        for (const char* method : {"Claim", "VerifyStart", "VerifyStop", "Release"})
            fprintd.answer(method, {});
    }

    bool verify() { return authority.verifyFingerprint("verify authorization"); }

    void tell(const char* status, bool done)
    {
        service.emitSignal(device, deviceInterface, "VerifyStatus", {QLatin1String(status), done});
    }
    // What the reader tells once it has been started.
    void willAnswer(const std::vector<std::pair<const char*, bool>>& statuses)
    {
        service.methods["VerifyStart"] = [this, statuses](const QDBusMessage& call) {
            service.reply(call, {});
            for (const auto& [status, done] : statuses)
                tell(status, done);
        };
    }
    void expectReaderIsFree()
    {
        service.arriveAt(
            QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("c")));
        QDBusConnection::disconnectFromBus(QStringLiteral("c"));
        EXPECT_EQ(
            service.calls.count(QStringLiteral("Release")), service.calls.count(QStringLiteral("Claim")));
        EXPECT_EQ(service.calls.count(QStringLiteral("VerifyStop")),
            service.calls.count(QStringLiteral("VerifyStart")));
    }

    test::FakeBusService service{bus.address(), QStringLiteral("net.reactivated.Fprint")};
};

class PasswordTest : public AuthorityTest {
protected:
    bool verify() { return authority.verifyPassword("verify authorization"); }
    static QVariant result(bool granted, bool challenge, const QMap<QString, QString>& details = {})
    {
        QDBusArgument values;
        values.beginStructure();
        values << granted << challenge;
        values.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QString>());
        for (auto detail = details.begin(); detail != details.end(); ++detail) {
            values.beginMapEntry();
            values << detail.key() << detail.value();
            values.endMapEntry();
        }
        values.endMap();
        values.endStructure();
        return QVariant::fromValue(values);
    }

    test::FakeBusService service{bus.address(), QStringLiteral("org.freedesktop.PolicyKit1")};
};

} // namespace

TEST_F(FingerprintTest, IsYesForAFingerThatMatches)
{
    willAnswer({{"verify-match", true}});
    EXPECT_TRUE(verify());
    EXPECT_EQ(service.calls,
        (QStringList{QStringLiteral("GetDefaultDevice"), QStringLiteral("ListEnrolledFingers"),
            QStringLiteral("Claim"), QStringLiteral("VerifyStart"), QStringLiteral("VerifyStop"),
            QStringLiteral("Release")}));
    EXPECT_EQ(service.lastCall("VerifyStart").arguments(), QVariantList{QStringLiteral("any")});
    EXPECT_EQ(service.lastCall("Claim").arguments(), QVariantList{QString()}) << "the caller's own fingers";
}

TEST_F(FingerprintTest, IsNoForEverythingElseThatEndsTheCheck)
{
    for (const char* status :
        {"verify-no-match", "verify-disconnected", "verify-unknown-error", "any-other"}) {
        service.calls.clear();
        willAnswer({{status, true}});
        EXPECT_FALSE(verify()) << status;
        expectReaderIsFree();
    }
    for (const char* status : {"verify-no-match", "verify-disconnected", "verify-unknown-error"}) {
        willAnswer({{status, false}, {"verify-match", true}});
        EXPECT_FALSE(verify()) << status << " without the mark of the end";
    }
}

TEST_F(FingerprintTest, GoesOnAfterAFingerThatCouldNotBeRead)
{
    service.methods["VerifyStart"] = [this](const QDBusMessage& call) {
        service.reply(call, {});
        QTimer::singleShot(0, &service, [this] {
            for (const char* status : {"verify-retry-scan", "verify-swipe-too-short",
                     "verify-finger-not-centered", "verify-remove-and-retry"})
                tell(status, false);
            tell("verify-match", true);
        });
    };
    EXPECT_TRUE(verify());
    EXPECT_EQ(prompt.asked,
        (std::vector<platform::Awaited>{platform::Awaited::finger, platform::Awaited::fingerAgain,
            platform::Awaited::fingerAgain, platform::Awaited::fingerAgain, platform::Awaited::fingerAgain}));
    expectReaderIsFree();
}

TEST_F(FingerprintTest, AsksForNoFingerAgainOnceOneHasMatched)
{
    willAnswer({{"verify-match", false}, {"verify-retry-scan", false}});
    EXPECT_TRUE(verify());
    EXPECT_EQ(prompt.asked, std::vector<platform::Awaited>{platform::Awaited::finger});
}

TEST_F(FingerprintTest, IsNoAtOnceWhenNoReaderCanBeUsed)
{
    const struct {
        const char* method;
        const char* error;
    } cases[] = {
        {"GetDefaultDevice", "net.reactivated.Fprint.Error.NoSuchDevice"},
        {"ListEnrolledFingers", "net.reactivated.Fprint.Error.NoEnrolledPrints"},
        {"Claim", "net.reactivated.Fprint.Error.AlreadyInUse"},
        {"Claim", "net.reactivated.Fprint.Error.PermissionDenied"},
        {"VerifyStart", "net.reactivated.Fprint.Error.Internal"},
    };
    for (const auto& c : cases) {
        const auto before = service.methods[c.method];
        service.calls.clear();
        service.fail(c.method, c.error);
        EXPECT_FALSE(verify()) << c.error;
        expectReaderIsFree();
        service.methods[c.method] = before;
    }
    service.answer("ListEnrolledFingers", {QStringList()});
    prompt.asked.clear();
    EXPECT_FALSE(verify()) << "an empty list of fingers";
    EXPECT_TRUE(prompt.asked.empty());
}

TEST_F(FingerprintTest, IsNoForAnswersThatMakeNoSense)
{
    const char* methods[] = {"GetDefaultDevice", "ListEnrolledFingers", "Claim", "VerifyStart"};
    for (const char* method : methods) {
        const auto before = service.methods[method];
        service.answer(method, {7U, QStringLiteral("x")});
        EXPECT_FALSE(verify()) << method;
        service.methods[method] = before;
    }
    service.methods["VerifyStart"] = [this](const QDBusMessage& call) {
        service.reply(call, {});
        service.emitSignal(device, deviceInterface, "VerifyStatus", {});
        service.emitSignal(device, deviceInterface, "VerifyStatus", {true, QStringLiteral("verify-match")});
        service.emitSignal(device, deviceInterface, "VerifyStatus", {QStringLiteral("verify-match")});
        service.emitSignal(device, deviceInterface, "VerifyStatus", {QStringLiteral("verify-match"), 1});
        tell("verify-no-match", true);
    };
    EXPECT_FALSE(verify());
}

TEST_F(FingerprintTest, BelievesNobodyButTheServiceItself)
{
    test::FakeBusService stranger(bus.address(), {});
    service.methods["VerifyStart"] = [&](const QDBusMessage& call) {
        service.reply(call, {});
        stranger.emitSignal(device, deviceInterface, "VerifyStatus", {QStringLiteral("verify-match"), true});
        QTimer::singleShot(0, &stranger, [&] {
            stranger.arriveAt(
                QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("s")));
            QDBusConnection::disconnectFromBus(QStringLiteral("s"));
            tell("verify-no-match", true);
        });
    };
    EXPECT_FALSE(verify());
}

TEST_F(FingerprintTest, WaitsForAFingerUntilThePersonGivesUp)
{
    prompt.givesUp = true;
    EXPECT_FALSE(verify());
    EXPECT_EQ(prompt.asked, std::vector<platform::Awaited>{platform::Awaited::finger});
    expectReaderIsFree();
}

TEST_F(FingerprintTest, IsNoWhenTheServiceGoesAway)
{
    service.methods["VerifyStart"] = [this](const QDBusMessage& call) {
        service.reply(call, {});
        QTimer::singleShot(0, &service, [this] { service.vanish(); });
    };
    EXPECT_FALSE(verify()) << "while a finger is awaited";
    EXPECT_FALSE(verify()) << "before the check";
}

TEST_F(FingerprintTest, IsNoWhenTheServiceGoesAwayInMidCall)
{
    for (const char* method : {"GetDefaultDevice", "ListEnrolledFingers", "Claim", "VerifyStart"}) {
        const test::PrivateBus ownBus;
        test::FakeBusService dying(ownBus.address(), QStringLiteral("net.reactivated.Fprint"));
        prepare(dying);
        dying.vanishAt(method);
        EXPECT_FALSE(
            desktop::DesktopAuthority(ownBus.address(), prompt).verifyFingerprint("verify authorization"))
            << method;
    }
}

TEST_F(FingerprintTest, IsNoWhenTheBusGoesAway)
{
    service.methods["VerifyStart"] = [this](const QDBusMessage& call) {
        service.reply(call, {});
        QTimer::singleShot(0, &service, [this] { bus.end(); });
    };
    EXPECT_FALSE(verify()) << "when the reader has just been started";
    EXPECT_FALSE(verify()) << "before the check";
}

TEST_F(FingerprintTest, IsNoWhenTheBusGoesAwayWhileAFingerIsAwaited)
{
    willAnswer(
        {{"verify-retry-scan", false}}); // which arrives behind the reply: only a finger is awaited then
    prompt.afterAskingAgain = [this] { bus.end(); };
    EXPECT_FALSE(verify());
    EXPECT_EQ(prompt.asked.size(), 2U);
}

TEST_F(FingerprintTest, DoesNotWaitForASilentService)
{
    for (const char* method : {"GetDefaultDevice", "ListEnrolledFingers", "Claim", "VerifyStart"}) {
        const auto before = service.methods[method];
        service.calls.clear();
        service.methods.erase(method);
        desktop::DesktopAuthority impatient(bus.address(), prompt, std::chrono::milliseconds(50));
        EXPECT_FALSE(impatient.verifyFingerprint("verify authorization")) << method;
        expectReaderIsFree();
        service.methods[method] = before;
    }
    willAnswer({{"verify-match", true}});
    service.methods.erase("VerifyStop");
    service.methods.erase("Release");
    // Long enough for all that is answered, however busy the machine.
    desktop::DesktopAuthority patient(bus.address(), prompt, std::chrono::seconds(2));
    EXPECT_TRUE(patient.verifyFingerprint("verify authorization")) << "the finger had matched";
    expectReaderIsFree();
    EXPECT_TRUE(service.lastCall("VerifyStop").isReplyRequired());
    EXPECT_FALSE(service.lastCall("Release").isReplyRequired()) << "it has been waited for once";
}

TEST_F(FingerprintTest, EndsWithTheProgram)
{
    service.methods["VerifyStart"] = [this](const QDBusMessage& call) {
        service.reply(call, {});
        QTimer::singleShot(0, QCoreApplication::instance(), [] { QCoreApplication::exit(); });
    };
    bool recognised = true;
    QTimer::singleShot(0, &service, [&] { recognised = verify(); });
    QCoreApplication::exec();
    EXPECT_FALSE(recognised);
    expectReaderIsFree();
}

TEST_F(PasswordTest, AsksPolkitAboutThisProcess)
{
    service.answer("CheckAuthorization", {result(true, false)});
    EXPECT_TRUE(verify());

    const QDBusMessage call = service.lastCall("CheckAuthorization");
    EXPECT_EQ(call.path(), QStringLiteral("/org/freedesktop/PolicyKit1/Authority"));
    EXPECT_EQ(call.interface(), QStringLiteral("org.freedesktop.PolicyKit1.Authority"));
    ASSERT_EQ(call.signature(), QStringLiteral("(sa{sv})sa{ss}us"));
    const auto subject = call.arguments().at(0).value<QDBusArgument>();
    QString kind;
    QVariantMap details;
    subject.beginStructure();
    subject >> kind >> details;
    subject.endStructure();
    EXPECT_EQ(kind, QStringLiteral("unix-process"));
    EXPECT_EQ(details,
        (QVariantMap{{QStringLiteral("pid"), static_cast<uint>(getpid())},
            {QStringLiteral("start-time"), static_cast<qulonglong>(*platform::startTimeOfProcess(getpid()))},
            {QStringLiteral("uid"), static_cast<int>(getuid())}}));
    EXPECT_EQ(call.arguments().at(1), QStringLiteral("vantreal.quorvane.system.privilege.admin"));
    EXPECT_EQ(call.arguments().at(3), 1U) << "a person may be asked";
    EXPECT_NE(call.arguments().at(4), QString()) << "it can be cancelled";
}

TEST_F(PasswordTest, IsNoForEveryOtherAnswer)
{
    QDBusArgument shortResult; // as polkit's answer begins
    shortResult.beginStructure();
    shortResult << true;
    shortResult.endStructure();
    const struct {
        const char* why;
        QVariantList answer;
    } cases[] = {
        {"refused", {result(false, false)}},
        {"dismissed", {result(false, false, {{QStringLiteral("polkit.dismissed"), QStringLiteral("true")}})}},
        {"nobody to ask", {result(false, true)}},
        {"nothing", {}},
        {"a bare yes", {true}},
        {"a yes that lacks the rest", {QVariant::fromValue(shortResult)}},
        {"a yes with something behind it", {result(true, false), 7}},
        {"a text", {QStringLiteral("yes")}},
    };
    for (const auto& c : cases) {
        service.answer("CheckAuthorization", c.answer);
        EXPECT_FALSE(verify()) << c.why;
    }
    service.fail("CheckAuthorization", "org.freedesktop.PolicyKit1.Error.Failed");
    EXPECT_FALSE(verify()) << "the action is not registered";
}

TEST_F(PasswordTest, IsNoWhenPolkitOrTheBusGoesAway)
{
    service.vanishAt("CheckAuthorization");
    EXPECT_FALSE(verify()) << "in mid-call";
    EXPECT_FALSE(verify()) << "before";

    test::FakeBusService another(bus.address(), QStringLiteral("org.freedesktop.PolicyKit1"));
    another.methods["CheckAuthorization"] = [this](const QDBusMessage&) { bus.end(); };
    EXPECT_FALSE(verify()) << "the bus, in mid-call";
    EXPECT_FALSE(verify()) << "the bus, before";
}

TEST_F(PasswordTest, CanBeGivenUpWhenNoAnswerComes)
{
    prompt.givesUp = true;
    EXPECT_FALSE(verify());
    EXPECT_EQ(prompt.asked, std::vector<platform::Awaited>{platform::Awaited::password});
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return service.calls.contains(QStringLiteral("CancelCheckAuthorization")); }));
    EXPECT_EQ(service.lastCall("CancelCheckAuthorization").arguments().at(0),
        service.lastCall("CheckAuthorization").arguments().at(4));
}

TEST_F(PasswordTest, CanBeGivenUpWithoutTheOnesBeforeIt)
{
    service.answer("CheckAuthorization", {result(true, false)});
    verify();
    const QVariant first = service.lastCall("CheckAuthorization").arguments().at(4);
    verify();
    EXPECT_NE(service.lastCall("CheckAuthorization").arguments().at(4), first);
}

TEST_F(PasswordTest, HasNoTimeLimitForThePerson)
{
    service.methods["CheckAuthorization"] = [this](const QDBusMessage& call) {
        // Longer than the service may take for anything else.
        QTimer::singleShot(300, &service, [this, call] { service.reply(call, {result(true, false)}); });
    };
    desktop::DesktopAuthority impatient(bus.address(), prompt, std::chrono::milliseconds(100));
    EXPECT_TRUE(impatient.verifyPassword("verify authorization"));
}

TEST_F(PasswordTest, HasAConnectionOfItsOwnThatEndsWithIt)
{
    service.answer("CheckAuthorization", {result(true, false)});
    EXPECT_TRUE(verify());
    const QString first = service.lastCall("CheckAuthorization").service();
    EXPECT_TRUE(verify());
    EXPECT_NE(service.lastCall("CheckAuthorization").service(), first);
    const auto observer
        = QDBusConnection::connectToBus(QString::fromStdString(bus.address()), QStringLiteral("observer"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !observer.interface()->isServiceRegistered(first); }));
    QDBusConnection::disconnectFromBus(QStringLiteral("observer"));
}

TEST(DesktopAuthority, OfABusThatIsNotThereIsNo)
{
    FakePrompt prompt;
    for (const char* address : {"unix:path=/nonexistent/bus", "", "nonsense", "unix:path="}) {
        desktop::DesktopAuthority authority(address, prompt);
        EXPECT_FALSE(authority.verifyFingerprint("verify authorization")) << address;
        EXPECT_FALSE(authority.verifyPassword("verify authorization")) << address;
    }
}

TEST(DesktopAuthority, AsksAtTheFixedAddressOutsideASandbox)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/impostor");
    EXPECT_EQ(desktop::systemBusAddress(false), "unix:path=/run/dbus/system_bus_socket");
    EXPECT_EQ(desktop::systemBusAddress(true), "unix:path=/impostor");
    qunsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    EXPECT_EQ(desktop::systemBusAddress(true), "unix:path=/run/dbus/system_bus_socket");
}

} // namespace quorvane::windows
