#include "app/QVPreferencesWindow.h"
#include "app/Surroundings.h"
#include "platform/AdminAuthority.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/HistoryWindow.h"
#include "windows/ImportWindowController.h"
#include "windows/MapWindow.h"
#include "windows/PathField.h"
#include "windows/RulesEditorTableController.h"
#include "windows/RulesTable.h"
#include "windows/TouchingWindow.h"
#include "windows/WindowLook.h"
#include "workflow/PlannedChange.h"
#include "workflow/RulesHistory.h"

#include <QApplication>
#include <QEventLoop>
#include <QPixmap>
#include <QTableView>
#include <QWidget>

#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

namespace quorvane {

namespace {

// Scrolled so far that `firstRow` is the first one that shows.
std::unique_ptr<QWidget> mainWindow(int firstRow, Surroundings& around)
{
    auto window = std::make_unique<RulesEditorTableController>(
        around.document, around.delegate, around.run, around.workspace, around.log);
    if (const std::string volume = volumeFromEnvironment(); !volume.empty())
        window->useVolume(volume);
    window->show();
    auto* table = window->findChild<QTableView*>();
    table->scrollTo(table->model()->index(firstRow, 0), QAbstractItemView::PositionAtTop);
    return window;
}

std::unique_ptr<QWidget> reviewOf(const char* rulesFile, Surroundings& around)
{
    auto window = std::make_unique<ImportWindowController>(around.document, around.workspace, around.log);
    window->setPath(rulesFile);
    return window;
}

// The editor of the rule in a row of the table.
std::unique_ptr<QWidget> editorOf(int row, Surroundings& around)
{
    const bool includeSystemRules = false;
    if (row < 0 || static_cast<std::size_t>(row) >= around.store.totalRules(includeSystemRules))
        return nullptr;
    const RuleRef& rule = around.store.ruleAtIndex(static_cast<std::size_t>(row), includeSystemRules);
    const auto* watch = std::get_if<WatchRulePtr>(&rule);
    if (watch == nullptr) {
        auto editor
            = std::make_unique<EditPolicyWindowController>(around.document, around.workspace, around.log);
        editor->setPolicyRule(std::get<PolicyRulePtr>(rule));
        return editor;
    }
    auto editor = std::make_unique<EditWatchWindowController>(around.document, around.workspace, around.log);
    editor->setWatchRule(*watch);
    return editor;
}

// Everybody has proved to be an administrator.
class AllAreAdministrators : public AdminAuthority {
public:
    bool isAdminUser() override { return true; }
    bool verifyFingerprint(const std::string& /*reason*/) override { return true; }
    bool verifyPassword(const std::string& /*reason*/) override { return true; }
};

// As an administrator sees it.
std::unique_ptr<QWidget> preferencesWindow(Surroundings& around)
{
    static AllAreAdministrators administrators;
    const auto locations = Locations::fromEnvironment();
    auto* delegate = new AppDelegate(locations, around.log, around.run,
        {around.notices, administrators, *around.runningApplications, around.workspace});
    auto window = std::make_unique<QVPreferencesWindow>(
        locations, *delegate, around.run, around.privilegedCommand, around.preferencesHistory, around.log);
    delegate->setParent(window.get());
    window->windowDidLoad();
    return window;
}

// Waits until the window has said so.
template <class Window> void waitFor(Window& window, void (Window::*signal)())
{
    QEventLoop untilThen;
    QObject::connect(&window, signal, &untilThen, &QEventLoop::quit);
    untilThen.exec();
}

std::unique_ptr<QWidget> historyWindow(Surroundings& around)
{
    static RulesHistory rules(around.document);
    auto window = std::make_unique<HistoryWindow>(std::vector<FileHistory*>{&rules});
    waitFor(*window, &HistoryWindow::wasFilled);
    return window;
}

// The table of a main window that nobody sees.
class NoTable : public RulesTable {
public:
    std::vector<RuleRef> selectedRules() const override { return {}; }
    RulesSelection selection() const override { return {}; }
    void selectRules(const std::vector<RuleRef>& /*rules*/) override { }
    void revealRule(const RuleRef& /*rule*/) override { }
    bool perform(const PlannedChange& /*planned*/, const ChangeReason& /*reason*/) override { return false; }
    void addNotice(FootNotice /*notice*/) override { }
};

std::unique_ptr<QWidget> touchingWindow(const char* path, Surroundings& around)
{
    static NoTable table;
    auto window = std::make_unique<TouchingWindow>(around.store, table, around.workspace);
    window->findChild<PathField*>(QStringLiteral("pathField"))->setPath(path);
    waitFor(*window, &TouchingWindow::wasAnswered);
    return window;
}

std::unique_ptr<QWidget> mapWindow(Surroundings& around)
{
    static NoTable table;
    auto window = std::make_unique<MapWindow>(around.store, table);
    waitFor(*window, &MapWindow::wasMade);
    return window;
}

// Null when the words name no window.
std::unique_ptr<QWidget> windowNamed(int wordCount, char** words, Surroundings& around)
{
    const std::string_view name = wordCount == 0 ? "main" : words[0];
    const int row = wordCount == 2 ? QByteArray(words[1]).toInt() : 0;
    if (name == "main" && wordCount <= 2)
        return mainWindow(row, around);
    if (name == "editor" && wordCount == 2)
        return editorOf(row, around);
    if (name == "review" && wordCount == 2)
        return reviewOf(words[1], around);
    if (name == "touching" && wordCount == 2)
        return touchingWindow(words[1], around);
    if (name == "map" && wordCount == 1)
        return mapWindow(around);
    if (name == "history" && wordCount == 1)
        return historyWindow(around);
    if (name == "preferences" && wordCount == 1)
        return preferencesWindow(around);
    return nullptr;
}

} // namespace

} // namespace quorvane

// quorvane-window-image FILE.png [WINDOW]: renders a window, as it opens, into FILE.png.
int main(int argumentCount, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argumentCount, arguments);
    quorvane::applyWindowLook(application);
    const auto log = quorvane::makeProgramLog("quorvane-window-image", false);
    quorvane::Surroundings around(quorvane::Locations::fromEnvironment(), *log, false);
    const auto window
        = argumentCount < 2 ? nullptr : quorvane::windowNamed(argumentCount - 2, arguments + 2, around);
    if (!window) {
        std::fputs("usage: quorvane-window-image FILE.png [main [ROW] | editor ROW | review RULES-FILE | "
                   "touching PATH | map | history | preferences]\n",
            stderr);
        return 2;
    }
    window->show();
    QApplication::processEvents();
    if (!window->grab().save(QString::fromLocal8Bit(arguments[1]), "PNG")) {
        std::fprintf(stderr, "quorvane-window-image: cannot write '%s'\n", arguments[1]);
        return 1;
    }
    return 0;
}
