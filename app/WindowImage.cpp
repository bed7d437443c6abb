#include "app/AppDelegate.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/Workspace.h"
#include "rules/RuleManager.h"
#include "windows/RulesEditorTableController.h"
#include "windows/WindowLook.h"
#include "workflow/RunState.h"

#include <QApplication>
#include <QPixmap>

#include <cstdio>

// quorvane-window-image FILE.png: renders the main window, as it opens, into FILE.png.
int main(int argumentCount, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argumentCount, arguments);
    if (argumentCount != 2) {
        std::fputs("usage: quorvane-window-image FILE.png\n", stderr);
        return 2;
    }
    quorvane::applyWindowLook(application);
    const auto log = quorvane::makeProgramLog("quorvane-window-image", false);
    const auto locations = quorvane::Locations::fromEnvironment();
    quorvane::RuleManager& store = quorvane::RuleManager::sharedManager(locations, *log);
    quorvane::Workspace workspace;
    quorvane::AppDelegate delegate(locations, *log);
    quorvane::RunState run;
    quorvane::RulesEditorTableController window(store, delegate, run, workspace, *log);
    window.show();
    QApplication::processEvents();
    if (!window.grab().save(QString::fromLocal8Bit(arguments[1]), "PNG")) {
        std::fprintf(stderr, "quorvane-window-image: cannot write '%s'\n", arguments[1]);
        return 1;
    }
    return 0;
}
