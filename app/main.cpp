#include "app/AppDelegate.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/StandardStreams.h"
#include "platform/Workspace.h"
#include "rules/RuleManager.h"
#include "windows/RulesEditorTableController.h"
#include "windows/WindowLook.h"
#include "workflow/RunState.h"

#include <QApplication>
#include <QIcon>

int main(int argumentCount, char** arguments)
{
    quorvane::secureStandardStreams();
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationName(QStringLiteral("Quorvane Configuration"));
    QApplication::setDesktopFileName(QStringLiteral("quorvane-configuration"));
    // Windows other than the main one may be closed, and the main one left for the preferences.
    QApplication::setQuitOnLastWindowClosed(false);
    quorvane::applyWindowLook(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/quorvane-configuration.svg")));

    const auto log = quorvane::makeProgramLog("quorvane-configuration", true);
    const auto locations = quorvane::Locations::fromEnvironment();
    quorvane::RuleManager& store = quorvane::RuleManager::sharedManager(locations, *log);
    quorvane::Workspace workspace;
    quorvane::AppDelegate delegate(locations, *log);
    quorvane::RunState run;
    quorvane::RulesEditorTableController mainWindow(store, delegate, run, workspace, *log);
    delegate.applicationDidFinishLaunching(store, mainWindow);
    return QApplication::exec();
}
