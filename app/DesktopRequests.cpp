#include "app/DesktopRequests.h"

#include "app/AppDelegate.h"
#include "platform/Log.h"
#include "platform/Relaunch.h"
#include "windows/QtText.h"
#include "windows/RulesEditorTableController.h"
#include "windows/WindowLook.h"

#include <QProcess>
#include <QTimer>

#include <chrono>
#include <utility>

namespace quorvane::app {

ServedProgram ServedProgram::present()
{
    return {.program = platform::runningProgram().value_or(std::string()),
        .longestUnneeded = std::chrono::seconds(20)};
}

DesktopRequests::DesktopRequests(AppDelegate& delegate, windows::RulesEditorTableController& mainWindow,
    platform::Log& log, ServedProgram served)
    : m_delegate(delegate)
    , m_mainWindow(mainWindow)
    , m_log(log)
    , m_served(std::move(served))
{
    // Queued, so that the desktop gets its reply before a window waits for the user.
    QObject::connect(
        &m_service, &desktop::ApplicationService::activated, &m_service, [this] { showMainWindow(); },
        Qt::QueuedConnection);
    QObject::connect(
        &m_service, &desktop::ApplicationService::filesWereOpened, &m_service,
        [this](const std::vector<std::string>& paths) { reviewFiles(paths); }, Qt::QueuedConnection);
    QObject::connect(
        &m_service, &desktop::ApplicationService::actionWasChosen, &m_service,
        [this](const QString& action) { doAction(action); }, Qt::QueuedConnection);
}

void DesktopRequests::start(const QDBusConnection& bus)
{
    if (m_service.start(bus)) {
        QTimer::singleShot(m_served.longestUnneeded, &m_service, [this] { endUnlessShown(); });
        return;
    }
    m_log.write(std::string("the session bus does not give the name ") + desktop::ApplicationService::name);
    QMetaObject::invokeMethod(
        &m_service, [this] { showMainWindow(); }, Qt::QueuedConnection);
}

void DesktopRequests::showMainWindow()
{
    if (!m_delegate.isTerminating())
        windows::bringToFront(m_mainWindow);
}

void DesktopRequests::reviewFiles(const std::vector<std::string>& paths)
{
    showMainWindow();
    if (!m_delegate.isTerminating())
        m_mainWindow.reviewFiles(paths);
}

void DesktopRequests::doAction(const QString& action)
{
    if (action != QLatin1String("preferences")) {
        m_log.write("the desktop asks for an unknown action");
        return;
    }
    // As a separate process, like the command line of the desktop entry: it shows no main window and ends
    // with its own window.
    if (!QProcess::startDetached(windows::toQt(m_served.program), {QStringLiteral("-preferences")}))
        m_log.write("cannot start the program for the preferences");
    endUnlessShown();
}

void DesktopRequests::endUnlessShown()
{
    if (!m_mainWindow.isVisible())
        m_delegate.terminate();
}

} // namespace quorvane::app
