#include "app/AppDelegate.h"

#include "platform/Log.h"
#include "platform/Unicode.h"
#include "windows/NoticeWindow.h"
#include "windows/QtText.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <utility>

namespace quorvane {

namespace {

constexpr std::chrono::seconds longestWait{10};

} // namespace

AppDelegate::AppDelegate(Locations locations, Log& log)
    : m_locations(std::move(locations))
    , m_log(log)
{
}

void AppDelegate::applicationDidFinishLaunching(const RuleManager& store, QWidget& mainWindow)
{
    mainWindow.show();
    mainWindow.activateWindow();
    // After the window, so that the notice stands before it and has the keyboard.
    if (const auto& message = store.lastErrorMessage()) {
        m_log.write("error on load: " + *message);
        displayNotice("Error Loading Configuration", *message, false);
    }
}

void AppDelegate::displayNotice(const std::string& header, const std::string& message, bool waitForResponse)
{
    auto* notice = new NoticeWindow(
        toQt(textFromMacRoman(header)), toQt(textFromMacRoman(message)), toQt(m_locations.noticeIconFile()));
    notice->show();
    notice->raise();
    notice->activateWindow();
    if (!waitForResponse)
        return;
    QEventLoop answered;
    connect(notice, &QObject::destroyed, &answered, &QEventLoop::quit);
    QTimer::singleShot(longestWait, &answered, &QEventLoop::quit);
    answered.exec();
}

void AppDelegate::terminate()
{
    // By the event loop, which may not be running yet: a window can ask for the end while it is made.
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
}

} // namespace quorvane
