#include "app/QVPreferencesWindow.h"
#include "app/Surroundings.h"
#include "platform/AdminAuthority.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "windows/CleanUpWindow.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/HistoryWindow.h"
#include "windows/ImportWindowController.h"
#include "windows/MapWindow.h"
#include "windows/PathField.h"
#include "windows/ProblemsFinder.h"
#include "windows/ProblemsModel.h"
#include "windows/ProblemsPanel.h"
#include "windows/RuleStrip.h"
#include "windows/RulesEditorTableController.h"
#include "windows/RulesTable.h"
#include "windows/TouchingWindow.h"
#include "windows/WindowLook.h"
#include "workflow/PlannedChange.h"
#include "workflow/RulesHistory.h"
#include "workflow/RulesPlace.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDockWidget>
#include <QEventLoop>
#include <QImage>
#include <QMenu>
#include <QTableView>
#include <QTreeView>
#include <QWidget>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace quorvane::app {

namespace {

// The subject of an image.
struct Subject {
    Subject() = default;
    template <class Window>
    Subject(std::unique_ptr<Window> window) // NOLINT(google-explicit-constructor)
        : shown(window.get())
        , owner(std::move(window))
    {
    }
    QWidget* shown = nullptr;
    std::unique_ptr<QWidget> owner; // the owner of the shown widget, or the widget itself
};

// Waits until the object has emitted the signal.
template <class Object, class... Values> void waitFor(Object& object, void (Object::*signal)(Values...))
{
    QEventLoop untilThen;
    QObject::connect(&object, signal, &untilThen, &QEventLoop::quit);
    untilThen.exec();
}

workflow::RulesPlace placeFromEnvironment()
{
    std::error_code error;
    return workflow::RulesPlace::folder(volumeFromEnvironment(), error)
        .value_or(workflow::RulesPlace::thisMachine());
}

std::unique_ptr<windows::RulesEditorTableController> makeMainWindow(Surroundings& around)
{
    auto window = std::make_unique<windows::RulesEditorTableController>(
        around.document, around.delegate, around.run, around.workspace, around.log);
    if (const std::string volume = volumeFromEnvironment(); !volume.empty())
        window->useVolume(volume);
    return window;
}

// The main window, scrolled so that `firstRow` is at the top.
Subject mainWindow(int firstRow, Surroundings& around)
{
    auto window = makeMainWindow(around);
    window->show();
    auto* table = window->findChild<QTableView*>();
    table->scrollTo(table->model()->index(firstRow, 0), QAbstractItemView::PositionAtTop);
    return window;
}

std::optional<rules::RuleRef> userRuleAt(int row, const rules::RuleManager& store)
{
    const bool includeSystemRules = false;
    const bool isThere = row >= 0 && static_cast<std::size_t>(row) < store.totalRules(includeSystemRules);
    return isThere ? std::optional(store.ruleAtIndex(static_cast<std::size_t>(row), includeSystemRules))
                   : std::nullopt;
}

// The first problem of the rule in the list; invalid when there is none.
QModelIndex problemOf(const rules::RuleRef& rule, const windows::ProblemsModel& problems)
{
    for (int kind = 0; kind < problems.rowCount(); ++kind) {
        const QModelIndex list = problems.index(kind, 0);
        for (int row = 0; row < problems.rowCount(list); ++row) {
            const QModelIndex index = problems.index(row, 0, list);
            if (problems.problemAt(index)->rule == rule)
                return index;
        }
    }
    return {};
}

// The main window with the list of problems, in which that of a row's rule is selected.
Subject problemsOf(int row, Surroundings& around)
{
    constexpr int widthOfList = 210;
    const auto rule = userRuleAt(row, around.store);
    if (!rule)
        return {};
    auto window = makeMainWindow(around);
    auto* list = window->findChild<QDockWidget*>(QStringLiteral("problems"));
    list->show();
    window->resizeDocks({list}, {widthOfList}, Qt::Horizontal);
    window->show();
    auto* panel = window->findChild<windows::ProblemsPanel*>();
    waitFor(panel->finder(), &windows::ProblemsFinder::found);
    auto* tree = panel->findChild<QTreeView*>();
    Q_EMIT tree->clicked(problemOf(*rule, *panel->findChild<windows::ProblemsModel*>()));
    waitFor(*window->findChild<windows::RuleStrip*>(), &windows::RuleStrip::wasFilled);
    return window;
}

// The main window filtered by a class, given by its index in the combo box.
Subject narrowedTo(int place, Surroundings& around)
{
    auto window = makeMainWindow(around);
    window->findChild<QAction*>(QStringLiteral("narrowMenuItem"))->trigger();
    window->show();
    window->findChild<QComboBox*>(QStringLiteral("classChoice"))->setCurrentIndex(place);
    waitFor(*window->findChild<QTableView*>()->model(), &QAbstractItemModel::modelReset);
    return window;
}

// The window that the main one opens when menu items, with their names separated by "+", are chosen with
// these rules selected.
Subject windowOfItems(const char* items, int firstRow, int rules, QSize size, Surroundings& around)
{
    auto window = makeMainWindow(around);
    std::vector<rules::RuleRef> selected;
    for (int row = firstRow; row < firstRow + rules; ++row) {
        if (const auto rule = userRuleAt(row, around.store))
            selected.push_back(*rule);
    }
    window->selectRules(selected);
    for (const QString& item : QString::fromLatin1(items).split(QLatin1Char('+'))) {
        if (auto* action = window->findChild<QAction*>(item))
            action->trigger();
    }
    if (auto* cleanUp = window->findChild<windows::CleanUpWindow*>())
        waitFor(*cleanUp, &windows::CleanUpWindow::wasFilled);
    // Where a program has moved to is looked for; what is found then makes the list.
    if (auto* candidates = window->findChild<QComboBox*>(QStringLiteral("candidatesPopUp")))
        waitFor(*candidates->window()->findChild<QTableView*>()->model(), &QAbstractItemModel::modelReset);
    Subject subject(std::move(window));
    subject.shown = subject.owner->findChild<QDialog*>();
    if (subject.shown != nullptr)
        subject.shown->resize(size);
    return subject;
}

Subject menuNamed(const char* name, Surroundings& around)
{
    Subject subject(makeMainWindow(around));
    subject.shown = subject.owner->findChild<QMenu*>(QString::fromLatin1(name));
    return subject;
}

Subject reviewOf(const char* rulesFile, Surroundings& around)
{
    auto window
        = std::make_unique<windows::ImportWindowController>(around.document, around.workspace, around.log);
    window->setPlace(placeFromEnvironment());
    window->setPath(rulesFile);
    window->show();
    waitFor(*window, &windows::ImportWindowController::wasCounted);
    return window;
}

// The editor of the rule in a row of the table.
Subject editorOf(int row, Surroundings& around)
{
    const auto rule = userRuleAt(row, around.store);
    if (!rule)
        return {};
    const auto* watch = std::get_if<rules::WatchRulePtr>(&*rule);
    if (watch == nullptr) {
        auto editor = std::make_unique<windows::EditPolicyWindowController>(
            around.document, around.workspace, around.log);
        editor->setPlace(placeFromEnvironment());
        editor->setPolicyRule(std::get<rules::PolicyRulePtr>(*rule));
        return editor;
    }
    auto editor
        = std::make_unique<windows::EditWatchWindowController>(around.document, around.workspace, around.log);
    editor->setPlace(placeFromEnvironment());
    editor->setWatchRule(*watch);
    return editor;
}

// Accepts everyone as an administrator.
class AllAreAdministrators : public platform::AdminAuthority {
public:
    bool isAdminUser() override { return true; }
    bool verifyFingerprint(const std::string& /*reason*/) override { return true; }
    bool verifyPassword(const std::string& /*reason*/) override { return true; }
};

// As seen by an administrator.
Subject preferencesWindow(Surroundings& around)
{
    static AllAreAdministrators administrators;
    const auto locations = platform::Locations::fromEnvironment();
    auto* delegate = new AppDelegate(locations, around.log, around.run,
        {around.notices, administrators, *around.runningApplications, around.workspace});
    auto window = std::make_unique<QVPreferencesWindow>(
        locations, *delegate, around.run, around.privilegedCommand, around.preferencesHistory, around.log);
    delegate->setParent(window.get());
    window->windowDidLoad();
    return window;
}

Subject historyWindow(Surroundings& around)
{
    static workflow::RulesHistory rules(around.document);
    auto window = std::make_unique<windows::HistoryWindow>(std::vector<workflow::FileHistory*>{&rules});
    waitFor(*window, &windows::HistoryWindow::wasFilled);
    return window;
}

// A table without a main window.
class NoTable : public windows::RulesTable {
public:
    std::vector<rules::RuleRef> selectedRules() const override { return {}; }
    workflow::RulesSelection selection() const override { return {}; }
    void selectRules(const std::vector<rules::RuleRef>& /*rules*/) override { }
    void revealRule(const rules::RuleRef& /*rule*/) override { }
    bool perform(
        const workflow::PlannedChange& /*planned*/, const workflow::ChangeReason& /*reason*/) override
    {
        return false;
    }
    void keepWholeLines() override { }
    void addNotice(windows::FootNotice /*notice*/) override { }
};

Subject touchingWindow(const char* path, Surroundings& around)
{
    static NoTable table;
    auto window = std::make_unique<windows::TouchingWindow>(around.store, table, around.workspace);
    window->setPlace(placeFromEnvironment());
    window->findChild<windows::PathField*>(QStringLiteral("pathField"))->setPath(path);
    waitFor(*window, &windows::TouchingWindow::wasAnswered);
    return window;
}

Subject mapWindow(Surroundings& around)
{
    static NoTable table;
    auto window = std::make_unique<windows::MapWindow>(around.store, table);
    waitFor(*window, &windows::MapWindow::wasMade);
    return window;
}

// The widget when it has come to rest: one layout can ask for another.
QImage imageOf(QWidget& widget)
{
    constexpr int quietRounds = 5;
    QImage image;
    for (int quiet = 0; quiet < quietRounds;) {
        QApplication::processEvents();
        const QImage before = std::exchange(image, widget.grab().toImage());
        quiet = image == before ? quiet + 1 : 0;
    }
    return image;
}

// Empty when the words name no window.
Subject windowNamed(int wordCount, char** words, Surroundings& around)
{
    const std::string_view name = wordCount == 0 ? "main" : words[0];
    const auto number = [&](int word) { return word < wordCount ? QByteArray(words[word]).toInt() : 0; };
    if (name == "main" && wordCount <= 2)
        return mainWindow(number(1), around);
    if (name == "problems" && wordCount == 2)
        return problemsOf(number(1), around);
    if (name == "narrow" && wordCount == 2)
        return narrowedTo(number(1), around);
    if (name == "item" && wordCount == 6)
        return windowOfItems(words[1], number(2), number(3), {number(4), number(5)}, around);
    if (name == "menu" && wordCount == 2)
        return menuNamed(words[1], around);
    if (name == "editor" && wordCount == 2)
        return editorOf(number(1), around);
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
    return {};
}

} // namespace

} // namespace quorvane::app

// quorvane-window-image FILE.png [WINDOW]: renders a window, as it opens, into FILE.png.
int main(int argumentCount, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argumentCount, arguments);
    QApplication::setCursorFlashTime(0); // a window whose cursor blinks does not come to rest
    quorvane::windows::applyWindowLook(application);
    const auto log = quorvane::platform::makeProgramLog("quorvane-window-image", false);
    quorvane::app::Surroundings around(quorvane::platform::Locations::fromEnvironment(), *log, false);
    const quorvane::app::Subject subject = argumentCount < 2
        ? quorvane::app::Subject()
        : quorvane::app::windowNamed(argumentCount - 2, arguments + 2, around);
    if (subject.shown == nullptr) {
        std::fputs("usage: quorvane-window-image FILE.png [main [ROW] | problems ROW | narrow CLASS | "
                   "item NAME[+NAME...] FIRST-ROW RULES WIDTH HEIGHT | menu NAME | editor ROW | "
                   "review RULES-FILE | touching PATH | map | history | preferences]\n",
            stderr);
        return 2;
    }
    subject.shown->show();
    if (!quorvane::app::imageOf(*subject.shown).save(QString::fromLocal8Bit(arguments[1]), "PNG")) {
        std::fprintf(stderr, "quorvane-window-image: cannot write '%s'\n", arguments[1]);
        return 1;
    }
    return 0;
}
