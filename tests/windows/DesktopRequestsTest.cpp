#include "app/DesktopRequests.h"

#include "app/AppDelegate.h"
#include "tests/support/FakeDelegateServices.h"
#include "tests/windows/ApplicationBus.h"
#include "tests/windows/EditorTable.h"
#include "windows/ImportWindowController.h"

#include <algorithm>

namespace quorvane::windows {

namespace {

class DesktopRequestsTest : public test::EditorTable {
protected:
    DesktopRequestsTest()
    {
        open(test::firstLine);
        window->hide();
        requests = std::make_unique<app::DesktopRequests>(delegate, *window, log.log());
    }
    ~DesktopRequestsTest() override { requests.reset(); } // before the window

    // What is asked for follows the reply.
    void ask(const char* method, const QVariantList& arguments) const
    {
        bus.ask(method, arguments);
        QApplication::processEvents();
    }
    bool hasLogged(const std::string& line)
    {
        const auto lines = log.lines();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

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

TEST_F(DesktopRequestsTest, ShowNothingOnceTheEndIsAskedFor)
{
    const std::string file = box.folder.write("one.quorv", test::secondLine);
    requests->start(bus.service());
    delegate.terminate();
    // The end of the event loop would be that of a later test's as well.
    QCoreApplication::removePostedEvents(QCoreApplication::instance(), QEvent::MetaCall);
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
