#include "app/AppDelegate.h"

#include "platform/Log.h"
#include "platform/Unicode.h"
#include "windows/NoticeWindow.h"
#include "windows/QtText.h"

#include <QWidget>

#include <utility>

namespace quorvane {

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
        displayNotice("Error Loading Configuration", *message);
    }
}

void AppDelegate::displayNotice(const std::string& header, const std::string& message)
{
    auto* notice = new NoticeWindow(
        toQt(textFromMacRoman(header)), toQt(textFromMacRoman(message)), toQt(m_locations.noticeIconFile()));
    notice->show();
    notice->raise();
    notice->activateWindow();
}

} // namespace quorvane
