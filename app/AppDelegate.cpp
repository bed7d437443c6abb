#include "app/AppDelegate.h"

#include "desktop/InputLock.h"
#include "desktop/Workspace.h"
#include "platform/AdminAuthority.h"
#include "platform/Log.h"
#include "platform/Notices.h"
#include "platform/RunningApplications.h"
#include "platform/Unicode.h"
#include "windows/NoticeWindow.h"
#include "windows/QtText.h"
#include "windows/WindowLook.h"
#include "workflow/RunState.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace quorvane::app {

namespace {

constexpr std::chrono::seconds longestWait{10};
constexpr const char* agentIdentifier = "vantreal.QuorvaneUserAgent";
constexpr const char* authenticationReason = "verify authorization";

// The HTML version of the user guide, beside the target of `guide`. Empty when there is no such file.
std::string guidePage(const std::string& guide)
{
    std::error_code failure;
    std::filesystem::path page = std::filesystem::canonical(guide, failure);
    return failure ? std::string() : page.replace_extension(".html").string();
}

} // namespace

AppDelegate::AppDelegate(platform::Locations locations, platform::Log& log, const workflow::RunState& run,
    DelegateServices services)
    : m_locations(std::move(locations))
    , m_log(log)
    , m_run(run)
    , m_services(services)
{
}

void AppDelegate::setPreferencesOpener(std::function<QWidget*()> openPreferencesWindow)
{
    m_openPreferencesWindow = std::move(openPreferencesWindow);
}

void AppDelegate::applicationDidFinishLaunching(const rules::RuleManager& store, QWidget& mainWindow,
    const std::vector<std::string>& arguments, StartedBy starter)
{
    if (m_terminating) { // requested while a window was created; a local event loop may have consumed it
        terminate();
        return;
    }
    if (const auto& message = store.lastErrorMessage()) {
        m_log.write("error on load: " + *message);
        displayNotice("Error Loading Configuration", *message, false);
    }
    for (const std::string& argument : arguments) {
        if (argument != "-preferences" || m_terminating)
            continue;
        m_showPreferences = true;
        mainWindow.close();
        showPreferencesWindow();
    }
    if (!m_showPreferences && starter == StartedBy::person)
        windows::bringToFront(mainWindow);
}

void AppDelegate::applicationWillTerminate()
{
    m_ended = true;
    reloadAgentsAfterChange();
    m_services.notices.finish();
}

void AppDelegate::reloadAgentsAfterChange()
{
    if (m_run.g_dirty == 1 && !std::exchange(m_agentsReloaded, true))
        reloadAllAgents();
}

void AppDelegate::reloadAllAgents()
{
    const auto agents = m_services.applications.withBundleIdentifier(agentIdentifier);
    m_log.write(
        "there are " + std::to_string(agents.size()) + " instances of " + agentIdentifier + " running");
    for (const auto agent : agents) {
        m_log.write("sending SIGHUP to " + std::to_string(agent));
        m_services.applications.sendSignal(agent, agentIdentifier, SIGHUP);
    }
}

void AppDelegate::reloadAgent()
{
    // Deliberate: a different signal than at the end, to one agent only, and no log line.
    const auto agents = m_services.applications.withBundleIdentifier(agentIdentifier);
    if (!agents.empty())
        m_services.applications.sendSignal(agents.front(), agentIdentifier, SIGINT);
}

void AppDelegate::displayNotice(const std::string& header, const std::string& message, bool waitForResponse)
{
    const platform::DesktopNotice notice{platform::textFromMacRoman(header),
        platform::textFromMacRoman(message), m_locations.noticeIconFile()};
    const auto wait = std::make_shared<QEventLoop>();
    const auto goOn = [waiting = std::weak_ptr<QEventLoop>(wait)] {
        if (const auto waitingStill = waiting.lock())
            waitingStill->quit();
    };
    m_services.notices.show(notice, [this, notice, goOn](platform::NoticeEnd end) {
        if (end == platform::NoticeEnd::closed) {
            goOn();
            return;
        }
        auto* window = new windows::NoticeWindow(
            windows::toQt(notice.header), windows::toQt(notice.message), windows::toQt(notice.iconFile));
        adopt(*window);
        connect(window, &QObject::destroyed, this, goOn);
        windows::bringToFront(*window);
    });
    if (!waitForResponse)
        return;
    // Deliberate: shorter than the notice stays, so it may still be visible when the caller continues.
    QTimer timeOut(this);
    connect(&timeOut, &QTimer::timeout, wait.get(), &QEventLoop::quit);
    timeOut.start(longestWait);
    const desktop::InputLock lock;
    wait->exec();
}

bool AppDelegate::isAdminUser()
{
    return m_services.authority.isAdminUser();
}

bool AppDelegate::performAuthentication()
{
    if (performTouchIDAuthentication())
        return true;
    return !m_terminating && m_services.authority.verifyPassword(authenticationReason);
}

bool AppDelegate::performTouchIDAuthentication()
{
    return m_services.authority.verifyFingerprint(authenticationReason);
}

void AppDelegate::showPreferencesWindow()
{
    m_log.write("showing preferences window");
    QWidget* window = m_openPreferencesWindow();
    adopt(*window);
    windows::bringToFront(*window);
}

void AppDelegate::showHelp()
{
    const std::string guide = m_locations.userGuideFile();
    desktop::Workspace& workspace = m_services.workspace;
    if (!workspace.hasProgramFor("application/pdf") && workspace.openFile(guidePage(guide)))
        return;
    if (!workspace.openFile(guide))
        m_log.write("cannot open the user guide '" + guide + "'");
}

void AppDelegate::terminate()
{
    m_terminating = true;
    if (m_ended) // would interrupt what is being completed
        return;
    // Queued, since the event loop may not be running yet: a window can request the end during its creation.
    // Open windows are not closed: what closing a review would discard is kept for the next run.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
}

void AppDelegate::adopt(QWidget& window)
{
    // Deleted when it is closed, or else with the application.
    window.setAttribute(Qt::WA_DeleteOnClose);
    connect(this, &QObject::destroyed, &window, [&window] { delete &window; });
}

} // namespace quorvane::app
