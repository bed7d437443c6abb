#include "app/Surroundings.h"
#include "platform/EndRequests.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/StandardStreams.h"
#include "windows/RulesEditorTableController.h"
#include "windows/WindowLook.h"

#include <QApplication>
#include <QIcon>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// When the display goes away, as it can at the end of a session, the toolkit ends the program by exit(3),
// which takes nothing on the stack of main() down. The agents are reloaded all the same.
class ReloadAtExit {
public:
    ReloadAtExit(quorvane::AppDelegate& delegate, quorvane::Log& log)
    {
        s_delegate = &delegate;
        s_log = &log;
        std::atexit(reload);
    }
    ~ReloadAtExit() { s_delegate = nullptr; }
    ReloadAtExit(const ReloadAtExit&) = delete;
    ReloadAtExit& operator=(const ReloadAtExit&) = delete;

private:
    static void reload()
    {
        if (s_delegate == nullptr)
            return;
        s_delegate->reloadAgentsAfterChange();
        s_log->flush();
    }

    static inline quorvane::AppDelegate* s_delegate = nullptr;
    static inline quorvane::Log* s_log = nullptr;
};

} // namespace

int main(int argumentCount, char** arguments)
{
    quorvane::secureStandardStreams();
    const std::vector<std::string> allArguments(arguments, arguments + argumentCount);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    // The toolkit gets the program's name alone: no argument of its own has an effect.
    int onlyTheName = std::min(argumentCount, 1);
    QApplication application(onlyTheName, arguments);
    QApplication::setApplicationName(QStringLiteral("Quorvane Configuration"));
    QApplication::setDesktopFileName(QStringLiteral("quorvane-configuration"));
    // Windows other than the main one may be closed, and the main one left for the preferences.
    QApplication::setQuitOnLastWindowClosed(false);
    quorvane::applyWindowLook(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/quorvane-configuration.svg")));

    const quorvane::EndRequests endRequests;
    const auto log = quorvane::makeProgramLog("quorvane-configuration", true);
    const bool openedWithOptions
        = std::find(allArguments.begin(), allArguments.end(), "-preferences") != allArguments.end();
    quorvane::Surroundings around(quorvane::Locations::fromEnvironment(), *log, openedWithOptions);
    QObject::connect(&endRequests, &quorvane::EndRequests::endRequested, &around.delegate,
        &quorvane::AppDelegate::terminate);
    quorvane::RulesEditorTableController mainWindow(
        around.document, around.delegate, around.run, around.workspace, *log);
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &mainWindow,
        &quorvane::RulesEditorTableController::keepUnsavedRules);
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &around.delegate, [&around] {
        around.document.waitUntilWritten(); // before the agents are told to read it
        around.delegate.applicationWillTerminate();
    });
    const ReloadAtExit reloadAtExit(around.delegate, *log);
    QObject::connect(&around.delegate, &quorvane::AppDelegate::preferencesWereSaved, &mainWindow,
        &quorvane::RulesEditorTableController::showPreferencesFailure);
    QMetaObject::invokeMethod(
        &around.delegate,
        [&] { around.delegate.applicationDidFinishLaunching(around.store, mainWindow, allArguments); },
        Qt::QueuedConnection);
    return QApplication::exec();
}
