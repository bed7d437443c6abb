#include "bench/LongestGap.h"
#include "bench/WindowBench.h"
#include "desktop/Workspace.h"
#include "platform/Log.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/TestDocument.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/ImportWindowController.h"
#include "windows/ProblemsFinder.h"
#include "windows/ProblemsPanel.h"
#include "windows/RulesEditorTableController.h"
#include "windows/RulesTableView.h"
#include "workflow/RunState.h"

#include <QApplication>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QPixmap>
#include <QScrollBar>

#include <algorithm>
#include <cstdio>

using namespace quorvane;

namespace {

double milliseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// The review of an import of the same file, all of whose rules are present: from opening, which reads the
// file, to the first paint, and toggling all ticks.
void printTimesOfReview(const std::string& file, workflow::RulesDocument& document,
    desktop::Workspace& workspace, platform::Log& log)
{
    QElapsedTimer timer;
    timer.start();
    windows::ImportWindowController review(document, workspace, log);
    review.setPath(file);
    review.show();
    QApplication::processEvents();
    review.grab();
    std::printf("review-with-reading %.2f\n", milliseconds(timer));
    timer.restart();
    review.toggleAllTicks();
    review.grab();
    std::printf("review-ticks %.2f\n", milliseconds(timer));
}

// The problems of all rules, found on another thread: until they are listed, and the longest time without
// input in between. Then the same after one rule has changed.
void printTimesOfProblems(windows::RulesEditorTableController& window)
{
    auto* panel = window.findChild<windows::ProblemsPanel*>();
    windows::ProblemsFinder* finder = &panel->finder();
    bool isFound = false;
    QObject::connect(finder, &windows::ProblemsFinder::found, &window, [&isFound] { isFound = true; });
    const auto print = [&](const char* what, const auto& begin) {
        isFound = false;
        bench::LongestGap gap;
        begin();
        gap.handleEventsUntil([&isFound] { return isFound; });
        gap.step([&window] {
            QApplication::processEvents();
            window.grab();
        });
        std::printf("%s %.2f\n%s-longest-gap %.2f\n", what, gap.whole(), what, gap.longest());
    };
    print("problems", [&window] { window.findChild<QDockWidget*>(QStringLiteral("problems"))->show(); });
    print("problems-after-change", [&window] { window.tableViewCellAction(QStringLiteral("other")); });
}

// The commands of the table, each until its result is painted, without writing the file: its folder does not
// exist.
void printTimesOfCommands(windows::RulesEditorTableController& window, rules::RuleManager& store)
{
    auto* table = window.findChild<windows::RulesTableView*>();
    const auto show = [table] {
        QApplication::processEvents();
        table->viewport()->repaint();
    };
    QElapsedTimer timer;
    const auto print = [&](const char* name, const auto& command) {
        timer.start();
        command();
        show();
        std::printf("%s %.2f\n", name, milliseconds(timer));
    };
    const auto middle = store.totalRules(false) / 2;
    table->selectRow(static_cast<int>(middle));
    table->scrollTo(table->currentIndex());
    show();
    print("edit-tag", [&] { window.tableViewCellAction(QStringLiteral("mine")); });
    print("delete-row", [&] { window.deleteRow(middle); });
    print("delete-next-row", [&] { window.deleteRow(middle); });
    print("delete-two-rows", [&] { window.deleteRows({middle, middle + 2}); });
    if (const auto* policy = std::get_if<rules::PolicyRulePtr>(&store.ruleAtIndex(middle, false))) {
        windows::EditPolicyWindowController* editor = nullptr;
        print("open-editor", [&] {
            window.editPolicy(*policy);
            editor = window.findChild<windows::EditPolicyWindowController*>();
        });
        print("save-editor", [&] { editor->saveClicked(); });
    }
    print("select-all", [&] { table->selectAll(); });
    print("reload-all-selected", [&] { window.reloadData(); });
    print("delete-all", [&] { window.deleteRuleAction(); });
}

void printTimes(const std::string& file, const std::string& /*folder*/)
{
    platform::Log log({});
    const auto store = rules::RuleManager::initWithContentsOfFile(
        file, false, platform::Locations("/nonexistent", "bench"), log);
    store->totalRules(true);
    store->indexLargeGroups();
    desktop::Workspace workspace;

    QElapsedTimer timer;
    timer.start();
    test::FakeApplication application;
    workflow::RunState run;
    test::TestDocument document(*store, run, log);
    windows::RulesEditorTableController window(document, application, run, workspace, log);
    window.show();
    QApplication::processEvents();
    window.grab();
    std::printf("first-paint %.2f\n", milliseconds(timer));
    std::fflush(stdout); // who waits for it counts from the start of the process

    auto* table = window.findChild<windows::RulesTableView*>();
    QScrollBar* bar = table->verticalScrollBar();
    double slowest = 0;
    double total = 0;
    constexpr int pages = 200;
    for (int page = 0; page < pages; ++page) {
        timer.restart();
        bar->setValue(bar->value() + bar->pageStep());
        table->viewport()->repaint();
        const double taken = milliseconds(timer);
        slowest = std::max(slowest, taken);
        total += taken;
    }
    std::printf("repaint-scrolling %.2f\nslowest-repaint %.2f\n", total / pages, slowest);
    printTimesOfProblems(window);
    printTimesOfReview(file, document, workspace, log);
    printTimesOfCommands(window, *store);
}

} // namespace

// window_times FILE: the times of the main window of a store of FILE until its first paint, of a repaint
// while scrolling by pages, of finding all problems, of reviewing an import of the same file, and of the
// commands of the table, which finally delete all rules; in milliseconds.
int main(int argumentCount, char** arguments)
{
    return bench::runWindowBench("window_times", argumentCount, arguments, printTimes);
}
