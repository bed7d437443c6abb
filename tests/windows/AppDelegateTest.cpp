#include "app/AppDelegate.h"

#include "desktop/Workspace.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeDelegateServices.h"
#include "tests/support/Overtime.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/windows/FileOpener.h"
#include "windows/NoticeWindow.h"
#include "workflow/RunState.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include <signal.h>

namespace quorvane::windows {

namespace {

using Lines = std::vector<std::string>;

// A main window that notes when it is closed.
class FakeMainWindow : public QWidget {
public:
    int closings = 0;

protected:
    void closeEvent(QCloseEvent* /*event*/) override { ++closings; }
};

// A desktop with a program for every type of file but those named.
class FakeWorkspace : public desktop::Workspace {
public:
    bool hasProgramFor(const std::string& mimeType) override { return mimeType != missing; }

    std::string missing;
};

NoticeWindow* shownNotice()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* notice = qobject_cast<NoticeWindow*>(window); notice != nullptr && notice->isVisible())
            return notice;
    }
    return nullptr;
}

class AppDelegateTest : public testing::Test {
protected:
    AppDelegateTest()
    {
        delegate.setPreferencesOpener([this] {
            preferences.emplace_back(new QWidget);
            return preferences.back().data();
        });
    }

    // What asks the event loop to end must not end that of a later test.
    ~AppDelegateTest() override
    {
        QCoreApplication::removePostedEvents(QCoreApplication::instance(), QEvent::MetaCall);
    }

    void start(
        const Lines& arguments, app::AppDelegate::StartedBy starter = app::AppDelegate::StartedBy::person)
    {
        Lines all = arguments;
        all.insert(all.begin(), "/usr/bin/quorvane-configuration");
        delegate.applicationDidFinishLaunching(store, mainWindow, all, starter);
    }

    test::TemporaryFolder folder;
    test::CapturedLog log;
    platform::Locations locations{folder.path(), "ann"};
    rules::RuleManager store{locations, log.log()};
    workflow::RunState run;
    test::FakeNotices notices;
    test::FakeAuthority authority;
    test::FakeRunningApplications applications;
    FakeWorkspace workspace;
    FakeMainWindow mainWindow;
    std::vector<QPointer<QWidget>> preferences;
    app::AppDelegate delegate{locations, log.log(), run, {notices, authority, applications, workspace}};
};

using AppDelegateStart = AppDelegateTest;
using AppDelegateEnd = AppDelegateTest;
using AppDelegateNotice = AppDelegateTest;
using AppDelegateServices = AppDelegateTest;

} // namespace

TEST_F(AppDelegateStart, ShowsTheMainWindow)
{
    start({});
    EXPECT_TRUE(mainWindow.isVisible());
    EXPECT_EQ(mainWindow.closings, 0);
    EXPECT_TRUE(notices.shown.empty());
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_FALSE(delegate.showPreferences());
}

TEST_F(AppDelegateStart, TellsOfAConfigurationThatFailedToLoadAndShowsTheWindowAllTheSame)
{
    store.setLastErrorMessage("Failed to open file '/x' for reading: Permission denied (13)");
    bool waited = false;
    QTimer::singleShot(0, &delegate, [&waited] { waited = true; });
    start({});
    EXPECT_FALSE(waited);
    EXPECT_EQ(log.lines(), Lines{"error on load: " + *store.lastErrorMessage()});
    ASSERT_EQ(notices.shown.size(), 1U);
    EXPECT_EQ(notices.shown[0].header, "Error Loading Configuration");
    EXPECT_EQ(notices.shown[0].message, *store.lastErrorMessage());
    EXPECT_TRUE(mainWindow.isVisible());
}

TEST_F(AppDelegateStart, ByTheBusShowsNothingUntilItAsks)
{
    start({}, app::AppDelegate::StartedBy::bus);
    EXPECT_FALSE(mainWindow.isVisible());
    EXPECT_EQ(mainWindow.closings, 0);
}

TEST_F(AppDelegateStart, WithPreferencesShowsThemAloneAndClosesTheMainWindow)
{
    start({"-preferences"});
    EXPECT_FALSE(mainWindow.isVisible());
    EXPECT_EQ(mainWindow.closings, 1);
    ASSERT_EQ(preferences.size(), 1U);
    EXPECT_TRUE(preferences[0]->isVisible());
    EXPECT_TRUE(delegate.showPreferences());
    EXPECT_EQ(log.lines(), Lines{"showing preferences window"});
}

TEST_F(AppDelegateStart, WithPreferencesAlsoTellsOfAConfigurationThatFailedToLoad)
{
    store.setLastErrorMessage("broken");
    start({"-preferences"});
    EXPECT_EQ(notices.shown.size(), 1U);
    EXPECT_EQ(log.lines(), (Lines{"error on load: broken", "showing preferences window"}));
}

TEST_F(AppDelegateStart, WithPreferencesTwiceShowsThemTwiceAndKeepsTheSecond)
{
    start({"-preferences", "other", "-preferences"});
    EXPECT_EQ(mainWindow.closings, 2);
    ASSERT_EQ(preferences.size(), 2U);
    EXPECT_TRUE(preferences[0]->isVisible()) << "the window before is not closed";
    EXPECT_TRUE(preferences[1]->isVisible());
    EXPECT_EQ(log.lines(), (Lines{"showing preferences window", "showing preferences window"}));
}

TEST_F(AppDelegateStart, IgnoresEveryOtherArgument)
{
    start({"--preferences", "-Preferences", "-PREFERENCES", "preferences", "-preferences ", " -preferences",
        "-preferences=1", "-preference", "", std::string("-preferences\0x", 14)});
    EXPECT_TRUE(mainWindow.isVisible());
    EXPECT_TRUE(preferences.empty());
    EXPECT_FALSE(delegate.showPreferences());
}

TEST_F(AppDelegateStart, IsLeftOutWhenAWindowHasAskedForTheEndAlready)
{
    delegate.terminate();
    start({"-preferences"});
    EXPECT_TRUE(preferences.empty());
    start({});
    EXPECT_FALSE(mainWindow.isVisible());
    QTimer::singleShot(20000, &delegate, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0) << "ended before the time is out";
}

TEST_F(AppDelegateStart, SeesToAnEndThatALocalLoopHasTakenForItsOwn)
{
    delegate.terminate();
    QEventLoop wait; // as while a window is made
    wait.exec();
    QTimer::singleShot(20000, &delegate, [] { QCoreApplication::exit(1); });
    QTimer::singleShot(0, &delegate, [this] { start({}); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_FALSE(mainWindow.isVisible());
}

TEST_F(AppDelegateStart, ShowsNoFurtherPreferencesOnceTheEndIsAskedFor)
{
    delegate.setPreferencesOpener([this] {
        delegate.terminate();
        preferences.emplace_back(new QWidget);
        return preferences.back().data();
    });
    start({"-preferences", "-preferences"});
    EXPECT_EQ(preferences.size(), 1U);
}

TEST_F(AppDelegateEnd, WithoutAChangeTellsNoAgentAndLogsNothing)
{
    applications.running["vantreal.QuorvaneUserAgent"] = {41, 12};
    for (const std::int32_t dirty : {0, 2, -1}) { // only 1 counts
        run.g_dirty = dirty;
        delegate.applicationWillTerminate();
    }
    EXPECT_TRUE(applications.sent.empty());
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(AppDelegateEnd, AfterAChangeTellsEveryAgentInTheGivenOrder)
{
    applications.running["vantreal.QuorvaneUserAgent"] = {41, 12};
    run.g_dirty = 1;
    delegate.applicationWillTerminate();
    EXPECT_EQ(applications.sent,
        (Lines{"41 vantreal.QuorvaneUserAgent " + std::to_string(SIGHUP),
            "12 vantreal.QuorvaneUserAgent " + std::to_string(SIGHUP)}));
    EXPECT_EQ(log.lines(),
        (Lines{"there are 2 instances of vantreal.QuorvaneUserAgent running", "sending SIGHUP to 41",
            "sending SIGHUP to 12"}));
}

TEST_F(AppDelegateEnd, AfterAChangeWithoutAgentsLogsThatThereAreNone)
{
    run.g_dirty = 1;
    delegate.applicationWillTerminate();
    EXPECT_TRUE(applications.sent.empty());
    EXPECT_EQ(log.lines(), Lines{"there are 0 instances of vantreal.QuorvaneUserAgent running"});
}

TEST_F(AppDelegateEnd, TellsTheAgentsOnce)
{
    applications.running["vantreal.QuorvaneUserAgent"] = {41};
    run.g_dirty = 1;
    delegate.reloadAgentsAfterChange();
    delegate.applicationWillTerminate();
    EXPECT_EQ(applications.sent.size(), 1U);
}

TEST_F(AppDelegateEnd, IsNotCutShortByAFurtherRequest)
{
    delegate.applicationWillTerminate();
    delegate.terminate();
    QTimer::singleShot(0, &delegate, [] { QCoreApplication::exit(3); });
    EXPECT_EQ(QCoreApplication::exec(), 3);
}

TEST_F(AppDelegateEnd, HandsNoticesOverBeforeItEnds)
{
    delegate.applicationWillTerminate();
    EXPECT_EQ(notices.finished, 1);
}

TEST_F(AppDelegateServices, ReloadAgentInterruptsTheFirstOnlyAndLogsNothing)
{
    delegate.reloadAgent();
    EXPECT_TRUE(applications.sent.empty()) << "there is none";

    applications.running["vantreal.QuorvaneUserAgent"] = {41, 12};
    delegate.reloadAgent();
    EXPECT_EQ(applications.sent, Lines{"41 vantreal.QuorvaneUserAgent " + std::to_string(SIGINT)});
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(AppDelegateNotice, HasItsTextsAndTheLock)
{
    delegate.displayNotice("Header", "Message", false);
    ASSERT_EQ(notices.shown.size(), 1U);
    EXPECT_EQ(notices.shown[0].header, "Header");
    EXPECT_EQ(notices.shown[0].message, "Message");
    EXPECT_EQ(notices.shown[0].iconFile, locations.noticeIconFile());
}

// Deliberate, see ApplicationServices.
TEST_F(AppDelegateNotice, TextsAreReadAsMacOsRoman)
{
    delegate.displayNotice("\xC3\xA9", "\xC3\xA9", false);
    EXPECT_EQ(notices.shown.at(0).header, "\xE2\x88\x9A\xC2\xA9");
    EXPECT_EQ(notices.shown.at(0).message, "\xE2\x88\x9A\xC2\xA9");
}

TEST_F(AppDelegateNotice, WaitsForTheAnswerWhenAsked)
{
    bool answered = false;
    QTimer::singleShot(0, &delegate, [&] {
        answered = true;
        notices.ends.at(0)(platform::NoticeEnd::closed);
    });
    delegate.displayNotice("Header", "Message", true);
    EXPECT_TRUE(answered);

    delegate.displayNotice("Header", "Message", false); // returns at once
    notices.ends.at(1)(platform::NoticeEnd::closed);
    EXPECT_EQ(shownNotice(), nullptr);
}

TEST_F(AppDelegateNotice, WaitsTenSecondsAtMostAndStaysAllTheSame)
{
    std::chrono::milliseconds longest{};
    QTimer::singleShot(0, &delegate, [&] {
        notices.ends.at(0)(platform::NoticeEnd::undeliverable);
        auto* timeOut = delegate.findChild<QTimer*>();
        if (timeOut == nullptr) {
            shownNotice()->close();
            return;
        }
        longest = timeOut->intervalAsDuration();
        timeOut->start(0);
    });
    delegate.displayNotice("Header", "Message", true);
    EXPECT_EQ(longest, std::chrono::seconds(10));
    NoticeWindow* notice = shownNotice();
    ASSERT_NE(notice, nullptr);
    notice->close();
}

TEST_F(AppDelegateNotice, TakesNoInputWhileItWaits)
{
    QPushButton button;
    button.show();
    bool clicked = false;
    QObject::connect(&button, &QPushButton::clicked, [&] { clicked = true; });
    QTimer::singleShot(0, &delegate, [&] {
        QTest::mouseClick(button.windowHandle(), Qt::LeftButton, {}, button.rect().center());
        notices.ends.at(0)(platform::NoticeEnd::closed);
    });
    delegate.displayNotice("Header", "Message", true);
    QCoreApplication::processEvents();
    EXPECT_FALSE(clicked);
}

TEST_F(AppDelegateNotice, IsShownInAWindowOfOursWhenTheDesktopShowsNone)
{
    delegate.displayNotice("\xC3\xA9", "Message", false);
    EXPECT_EQ(shownNotice(), nullptr);
    notices.ends.at(0)(platform::NoticeEnd::undeliverable);
    NoticeWindow* notice = shownNotice();
    ASSERT_NE(notice, nullptr);
    EXPECT_EQ(notice->windowTitle(), QString::fromUtf8("\xE2\x88\x9A\xC2\xA9")) << "read once only";
    notice->close();
}

TEST_F(AppDelegateNotice, WaitsForTheWindowOfOursWhichTakesInputMeanwhile)
{
    const test::Overtime overtime;
    bool answered = false;
    QTimer::singleShot(0, &delegate, [&] {
        notices.ends.at(0)(platform::NoticeEnd::undeliverable);
        QTimer::singleShot(0, &delegate, [&] {
            answered = true;
            NoticeWindow* notice = shownNotice();
            ASSERT_NE(notice, nullptr);
            QTest::mouseClick(notice->buttons().button(QDialogButtonBox::Ok), Qt::LeftButton);
        });
    });
    delegate.displayNotice("Header", "Message", true);
    EXPECT_TRUE(answered);
    EXPECT_EQ(shownNotice(), nullptr);
    EXPECT_FALSE(overtime.happened());
}

TEST_F(AppDelegateNotice, GoesWithTheProgram)
{
    auto passing = std::make_unique<app::AppDelegate>(
        locations, log.log(), run, app::DelegateServices{notices, authority, applications, workspace});
    passing->displayNotice("Header", "Message", false);
    notices.ends.at(0)(platform::NoticeEnd::undeliverable);
    ASSERT_NE(shownNotice(), nullptr);
    passing.reset();
    EXPECT_EQ(shownNotice(), nullptr);
}

TEST_F(AppDelegateServices, AsksTheAuthorityWhoIsAnAdministrator)
{
    EXPECT_FALSE(delegate.isAdminUser());
    authority.isAdmin = true;
    EXPECT_TRUE(delegate.isAdminUser());
    EXPECT_TRUE(authority.asked.empty());
}

TEST_F(AppDelegateServices, AsksForNoPasswordAfterAFingerThatMatched)
{
    authority.fingerMatches = true;
    EXPECT_TRUE(delegate.performAuthentication());
    EXPECT_EQ(authority.asked, Lines{"finger: verify authorization"});
}

TEST_F(AppDelegateServices, AsksForAPasswordWhenTheFingerDidNotMatch)
{
    EXPECT_FALSE(delegate.performAuthentication()) << "cancelled as well";
    EXPECT_EQ(authority.asked, (Lines{"finger: verify authorization", "password: verify authorization"}));
    authority.passwordIsRight = true;
    EXPECT_TRUE(delegate.performAuthentication());
}

TEST_F(AppDelegateServices, AsksForNoPasswordOnceTheEndIsAskedFor)
{
    EXPECT_FALSE(delegate.isTerminating());
    delegate.terminate();
    EXPECT_TRUE(delegate.isTerminating());
    EXPECT_FALSE(delegate.performAuthentication());
    EXPECT_EQ(authority.asked, Lines{"finger: verify authorization"});
}

TEST_F(AppDelegateServices, OpensTheUserGuide)
{
    test::FileOpener opener;
    folder.write("Library/Application Support/Quorvane/Quorvane User Guide.pdf", "%PDF-");
    folder.write("Library/Application Support/Quorvane/Quorvane User Guide.html", "<!DOCTYPE html>");
    delegate.showHelp();
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened[0].toLocalFile().toStdString(), locations.userGuideFile());
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(AppDelegateServices, OpensThePageBesideTheUserGuideWhereTheDesktopHasNoProgramForPdfFiles)
{
    test::FileOpener opener;
    workspace.missing = "application/pdf";
    folder.write("share/Quorvane User Guide.pdf", "%PDF-");
    const std::string page = folder.write("share/Quorvane User Guide.html", "<!DOCTYPE html>");
    std::filesystem::create_directories(folder.path() + "/Library/Application Support/Quorvane");
    std::filesystem::create_symlink(
        folder.path() + "/share/Quorvane User Guide.pdf", locations.userGuideFile());
    delegate.showHelp();
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened[0].toLocalFile().toStdString(), std::filesystem::canonical(page));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(AppDelegateServices, OpensAUserGuideWithoutAPageWhateverTheDesktopHas)
{
    test::FileOpener opener;
    workspace.missing = "application/pdf";
    folder.write("Library/Application Support/Quorvane/Quorvane User Guide.pdf", "%PDF-");
    delegate.showHelp();
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened[0].toLocalFile().toStdString(), locations.userGuideFile());
}

TEST_F(AppDelegateServices, SaysNothingOfAUserGuideThatIsMissingButInTheLog)
{
    const test::FileOpener opener;
    workspace.missing = "application/pdf";
    delegate.showHelp();
    EXPECT_TRUE(opener.opened.empty());
    EXPECT_TRUE(notices.shown.empty());
    EXPECT_EQ(shownNotice(), nullptr);
    EXPECT_EQ(log.lines(), Lines{"cannot open the user guide '" + locations.userGuideFile() + "'"});
}

TEST_F(AppDelegateServices, ShowsThePreferencesAfreshEachTime)
{
    delegate.showPreferencesWindow();
    delegate.showPreferencesWindow();
    EXPECT_EQ(preferences.size(), 2U);
    EXPECT_FALSE(delegate.showPreferences()) << "that tells of the start alone";
    for (const QPointer<QWidget>& window : preferences)
        window->close();
    EXPECT_TRUE(QTest::qWaitFor([this] { return preferences[0].isNull() && preferences[1].isNull(); }));
}

} // namespace quorvane::windows
