#include "app/DesktopRequests.h"

#include "app/AppDelegate.h"
#include "tests/support/FakeDelegateServices.h"
#include "tests/windows/ApplicationBus.h"
#include "tests/windows/EditorTable.h"
#include "windows/ImportWindowController.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace quorvane::windows {

namespace {

class DesktopRequestsTest : public test::EditorTable {
protected:
    DesktopRequestsTest()
    {
        open(test::firstLine);
        window->hide();
        serve(std::chrono::seconds(20));
    }
    ~DesktopRequestsTest() override { requests.reset(); } // before the window

    void serve(std::chrono::milliseconds longestUnneeded)
    {
        requests = std::make_unique<app::DesktopRequests>(
            delegate, *window, log.log(), app::ServedProgram{program, longestUnneeded});
    }
    // What is asked for follows the reply.
    void ask(const char* method, const QVariantList& arguments) const
    {
        bus.ask(method, arguments);
        QApplication::processEvents();
    }
    // It would end a later test's event loops as well.
    static void dropRequestToEnd()
    {
        QTimer end;
        QObject::connect(&end, &QTimer::timeout, [] { QCoreApplication::exit(); });
        end.start(0);
        QCoreApplication::exec();
    }
    bool hasLogged(const std::string& line)
    {
        const auto lines = log.lines();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    const std::string program = box.folder.path("program");
    test::ApplicationBus bus;
    test::FakeNotices notices;
    test::FakeAuthority authority;
    test::FakeRunningApplications applications;
    app::AppDelegate delegate{box.locations, log.log(), run, {notices, authority, applications, workspace}};
    std::unique_ptr<app::DesktopRequests> requests;
};

} // namespace

TEST_F(DesktopRequestsTest, ShowTheMainWindowWhenTheyAskForIt)
{
    requests->start(bus.service());
    QApplication::processEvents();
    EXPECT_FALSE(window->isVisible());
    ask("Activate", {});
    EXPECT_TRUE(window->isVisible());
}

TEST_F(DesktopRequestsTest, OpenTheReviewOfAFileOverTheMainWindow)
{
    const std::string file = box.folder.write("one.quorv", test::secondLine);
    requests->start(bus.service());
    ask("Open", {QStringList{QStringLiteral("file://") + QString::fromStdString(file)}});
    EXPECT_TRUE(window->isVisible());
    EXPECT_NE(window->findChild<ImportWindowController*>(), nullptr);
}

TEST_F(DesktopRequestsTest, OfAnUnknownActionAreOnlyLogged)
{
    requests->start(bus.service());
    ask("ActivateAction", {QStringLiteral("unknown"), QVariantList()});
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(delegate.isTerminating());
    EXPECT_TRUE(hasLogged("the desktop asks for an unknown action"));
}

TEST_F(DesktopRequestsTest, StartAProgramOfItsOwnForThePreferencesAndEndThisOne)
{
    const std::string file
        = box.folder.write("program", "#!/bin/sh\necho \"$@\" > '" + box.folder.path("asked") + "'\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    requests->start(bus.service());
    ask("ActivateAction", {QStringLiteral("preferences"), QVariantList()});
    EXPECT_TRUE(delegate.isTerminating());
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return test::TemporaryFolder::contents(box.folder.path("asked")) == "-preferences\n"; }));
    dropRequestToEnd();
}

TEST_F(DesktopRequestsTest, LogThatTheProgramForThePreferencesCannotBeStarted)
{
    window->show();
    requests->start(bus.service());
    ask("ActivateAction", {QStringLiteral("preferences"), QVariantList()});
    EXPECT_TRUE(hasLogged("cannot start the program for the preferences"));
    EXPECT_FALSE(delegate.isTerminating()) << "the main window is shown";
}

TEST_F(DesktopRequestsTest, EndAProgramThatIsAskedForNothing)
{
    for (const bool isNeeded : {true, false}) {
        window->setVisible(isNeeded);
        requests.reset();
        serve(std::chrono::milliseconds(0));
        requests->start(bus.service());
        QCoreApplication::processEvents();
        EXPECT_EQ(delegate.isTerminating(), !isNeeded);
    }
    dropRequestToEnd();
}

TEST_F(DesktopRequestsTest, ForThePreferencesAreThoseOfTheRunningProgram)
{
    EXPECT_EQ(app::ServedProgram::present().program, std::filesystem::canonical("/proc/self/exe"));
}

TEST_F(DesktopRequestsTest, ShowNothingOnceTheEndIsAskedFor)
{
    const std::string file = box.folder.write("one.quorv", test::secondLine);
    requests->start(bus.service());
    delegate.terminate();
    dropRequestToEnd();
    ask("Activate", {});
    ask("Open", {QStringList{QStringLiteral("file://") + QString::fromStdString(file)}});
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->findChild<ImportWindowController*>(), nullptr);
}

TEST_F(DesktopRequestsTest, CannotComeWithoutABusSoThatTheWindowIsShownAtOnce)
{
    requests->start(QDBusConnection(QStringLiteral("no such bus")));
    EXPECT_FALSE(window->isVisible()) << "not before the event loop runs";
    QApplication::processEvents();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(hasLogged("the session bus does not give the name com.vantreal.quorvane.configuration"));
}

} // namespace quorvane::windows
