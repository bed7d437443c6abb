#include "app/DesktopRequests.h"
#include "app/Surroundings.h"
#include "desktop/DesktopAppearance.h"
#include "desktop/EndRequests.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/StandardStreams.h"
#include "windows/Languages.h"
#include "windows/QtText.h"
#include "windows/RulesEditorTableController.h"
#include "windows/WindowLook.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

// When the display connection is lost, as can happen at the end of a session, Qt calls exit(3), which neither
// unwinds the stack of main() nor emits a signal. This saves what must be saved in that case, too.
class FinishAtExit {
public:
    explicit FinishAtExit(std::function<void()> finish)
    {
        s_finish = std::move(finish);
        std::atexit([] {
            if (s_finish)
                s_finish();
        });
    }
    ~FinishAtExit() { s_finish = nullptr; }
    FinishAtExit(const FinishAtExit&) = delete;
    FinishAtExit& operator=(const FinishAtExit&) = delete;

private:
    static inline std::function<void()> s_finish;
};

} // namespace

int main(int argumentCount, char** arguments)
{
    quorvane::platform::secureStandardStreams();
    const bool startedByBus = quorvane::desktop::ApplicationService::wasStartedByBus();
    const std::vector<std::string> allArguments(arguments, arguments + argumentCount);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    // Qt gets only the program's name, so that its own arguments have no effect.
    int onlyTheName = std::min(argumentCount, 1);
    QApplication application(onlyTheName, arguments);
    QApplication::setApplicationName(QStringLiteral("Quorvane Configuration"));
    QApplication::setDesktopFileName(QString::fromLatin1(quorvane::desktop::ApplicationService::name));
    // Closing windows other than the main one must not end the program, nor replacing it by the preferences.
    QApplication::setQuitOnLastWindowClosed(false);
    quorvane::windows::applyWindowLook(application);
    quorvane::windows::speakLanguageOf(application, QLocale::system());
    const quorvane::desktop::DesktopAppearance desktop(QDBusConnection::sessionBus());
    quorvane::windows::setAppearance(application, desktop.appearance());
    QObject::connect(&desktop, &quorvane::desktop::DesktopAppearance::changed, &application,
        [&application](
            quorvane::platform::Appearance look) { quorvane::windows::setAppearance(application, look); });
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/quorvane-configuration.svg")));

    const quorvane::desktop::EndRequests endRequests;
    const auto log = quorvane::platform::makeProgramLog("quorvane-configuration", true);
    const bool openedWithOptions
        = std::find(allArguments.begin(), allArguments.end(), "-preferences") != allArguments.end();
    const auto locations = quorvane::platform::Locations::fromEnvironment();
    if (!quorvane::app::loadStore(locations, *log, endRequests)) {
        log->flush();
        std::_Exit(EXIT_SUCCESS); // without waiting for a file that perhaps never answers
    }
    quorvane::app::Surroundings around(locations, *log, openedWithOptions);
    QObject::connect(&endRequests, &quorvane::desktop::EndRequests::endRequested, &around.delegate,
        &quorvane::app::AppDelegate::terminate);
    quorvane::windows::RulesEditorTableController mainWindow(
        around.document, around.delegate, around.run, around.workspace, *log);
    mainWindow.addHistory(around.preferencesHistory);
    if (around.settings.problem)
        mainWindow.showSettingsProblem(quorvane::windows::toQt(*around.settings.problem));
    if (const std::string volume = quorvane::app::volumeFromEnvironment(); !volume.empty())
        mainWindow.useVolume(volume);
    const auto saveWhatIsOpen = [&] {
        mainWindow.keepUnsavedRules();
        around.document.waitUntilWritten(); // before the agents are notified to read it
    };
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &mainWindow, [&] {
        saveWhatIsOpen();
        around.delegate.applicationWillTerminate();
    });
    const FinishAtExit finishAtExit([&] {
        saveWhatIsOpen();
        around.delegate.reloadAgentsAfterChange();
        log->flush();
    });
    QObject::connect(&around.delegate, &quorvane::app::AppDelegate::preferencesWereSaved, &mainWindow,
        &quorvane::windows::RulesEditorTableController::showPreferencesFailure);
    using StartedBy = quorvane::app::AppDelegate::StartedBy;
    const StartedBy starter = startedByBus ? StartedBy::bus : StartedBy::person;
    QMetaObject::invokeMethod(
        &around.delegate,
        [&] {
            around.delegate.applicationDidFinishLaunching(around.store, mainWindow, allArguments, starter);
        },
        Qt::QueuedConnection);
    quorvane::app::DesktopRequests requests(around.delegate, mainWindow, *log);
    if (startedByBus)
        requests.start(QDBusConnection::sessionBus());
    return QApplication::exec();
}
