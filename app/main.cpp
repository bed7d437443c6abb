#include "app/Surroundings.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/StandardStreams.h"
#include "windows/RulesEditorTableController.h"
#include "windows/WindowLook.h"

#include <QApplication>
#include <QIcon>

#include <algorithm>
#include <string>
#include <vector>

int main(int argumentCount, char** arguments)
{
    quorvane::secureStandardStreams();
    // Before the toolkit takes those out that it knows.
    const std::vector<std::string> allArguments(arguments, arguments + argumentCount);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationName(QStringLiteral("Quorvane Configuration"));
    QApplication::setDesktopFileName(QStringLiteral("quorvane-configuration"));
    // Windows other than the main one may be closed, and the main one left for the preferences.
    QApplication::setQuitOnLastWindowClosed(false);
    quorvane::applyWindowLook(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/quorvane-configuration.svg")));

    const auto log = quorvane::makeProgramLog("quorvane-configuration", true);
    const bool openedWithOptions
        = std::find(allArguments.begin(), allArguments.end(), "-preferences") != allArguments.end();
    quorvane::Surroundings around(quorvane::Locations::fromEnvironment(), *log, openedWithOptions);
    quorvane::RulesEditorTableController mainWindow(
        around.store, around.delegate, around.run, around.workspace, *log);
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &around.delegate,
        &quorvane::AppDelegate::applicationWillTerminate);
    QMetaObject::invokeMethod(
        &around.delegate,
        [&] { around.delegate.applicationDidFinishLaunching(around.store, mainWindow, allArguments); },
        Qt::QueuedConnection);
    return QApplication::exec();
}
