#include "desktop/ApplicationService.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/windows/ApplicationBus.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quorvane::windows {

namespace {

class ApplicationServiceTest : public testing::Test {
protected:
    // As for a click, whose token it passes on.
    void askFor(const char* method, const QVariantList& arguments, const char* token) const
    {
        bus.ask(method, arguments, {{QStringLiteral("activation-token"), QString::fromLatin1(token)}});
    }

    test::ApplicationBus bus;
    test::EnvironmentVariable present{"XDG_ACTIVATION_TOKEN", std::nullopt};
    desktop::ApplicationService service;
};

} // namespace

TEST_F(ApplicationServiceTest, PassesOnWhatTheDesktopAsksFor)
{
    const QSignalSpy activated(&service, &desktop::ApplicationService::activated);
    const QSignalSpy chosen(&service, &desktop::ApplicationService::actionWasChosen);
    std::vector<std::string> opened;
    QObject::connect(&service, &desktop::ApplicationService::filesWereOpened,
        [&](const std::vector<std::string>& paths) { opened = paths; });
    ASSERT_TRUE(service.start(bus.service()));

    bus.ask("Activate", {});
    EXPECT_EQ(activated.size(), 1);
    bus.ask("ActivateAction", {QStringLiteral("preferences"), QVariantList()});
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen[0][0].toString(), QStringLiteral("preferences"));
    bus.ask("Open",
        {QStringList{QStringLiteral("file:///a%20b.quorv"), QStringLiteral("https://example.org/c.quorv"),
            QStringLiteral("file:///d.quorv")}});
    EXPECT_EQ(opened, (std::vector<std::string>{"/a b.quorv", "/d.quorv"}));
    EXPECT_EQ(getenv("XDG_ACTIVATION_TOKEN"), nullptr);
}

TEST_F(ApplicationServiceTest, KeepsTheTokenOfTheClickForTheToolkit)
{
    ASSERT_TRUE(service.start(bus.service()));
    askFor("Activate", {}, "one");
    EXPECT_STREQ(getenv("XDG_ACTIVATION_TOKEN"), "one");
    askFor("Open", {QStringList()}, "two");
    EXPECT_STREQ(getenv("XDG_ACTIVATION_TOKEN"), "two");
    askFor("ActivateAction", {QStringLiteral("preferences"), QVariantList()}, "three");
    EXPECT_STREQ(getenv("XDG_ACTIVATION_TOKEN"), "three");
}

TEST_F(ApplicationServiceTest, DoesNotStartWithoutABusOrBesideAnother)
{
    EXPECT_FALSE(service.start(QDBusConnection(QStringLiteral("no such bus"))));
    ASSERT_TRUE(bus.client().registerService(QString::fromLatin1(desktop::ApplicationService::name)));
    EXPECT_FALSE(service.start(bus.service()));
}

TEST(ApplicationService, KnowsOnceThatTheBusHasStartedTheProgram)
{
    const test::EnvironmentVariable mark("QUORVANE_STARTED_BY_BUS", "1");
    EXPECT_TRUE(desktop::ApplicationService::wasStartedByBus());
    EXPECT_EQ(getenv("QUORVANE_STARTED_BY_BUS"), nullptr) << "programs that it starts would inherit it";
    EXPECT_FALSE(desktop::ApplicationService::wasStartedByBus());
}

} // namespace quorvane::windows
