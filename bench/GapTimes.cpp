#include "bench/LongestGap.h"
#include "bench/WindowBench.h"
#include "desktop/Workspace.h"
#include "tests/support/FakeApplication.h"
#include "windows/ImportWindowController.h"
#include "windows/RulesEditorTableController.h"
#include "windows/RulesTableView.h"
#include "workflow/RuleCells.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QLineEdit>
#include <QScrollBar>
#include <QThread>
#include <QWheelEvent>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

// gap_times FILE: the longest time without input of the main window during each of its operations, with a
// copy of FILE as the user's file, and until all that follows from it is done. One operation per line: its
// name and the gap in milliseconds; and the megabytes that are resident, and were at most, at three
// points.

namespace {

using namespace quorvane;

class Operations {
public:
    Operations(workflow::RulesDocument& document, windows::RulesEditorTableController& window)
        : m_document(document)
        , m_window(window)
        , m_table(*window.findChild<windows::RulesTableView*>())
        , m_search(*window.findChild<QLineEdit*>(QStringLiteral("searchField")))
    {
    }

    // Until nothing has happened for `quiet` milliseconds and the file is written.
    void print(const std::string& name, const std::function<void()>& operation, qint64 quiet = 1000)
    {
        bench::LongestGap gap;
        gap.step(operation);
        gap.step([this] { m_table.viewport()->repaint(); });
        QElapsedTimer idle;
        idle.start();
        while (idle.elapsed() < quiet || m_document.isWorking()) {
            bool hasWorked = false;
            gap.step([&] {
                hasWorked = QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
            });
            if (hasWorked) {
                idle.restart();
            } else {
                QThread::usleep(200); // the other core belongs to the workers
            }
        }
        std::printf("%s %.1f\n", name.c_str(), gap.longest());
        std::fflush(stdout);
    }

    void printSearches(const std::string& name)
    {
        print(name + "first-key", [this] { m_search.setText(QStringLiteral("d")); });
        print(name + "second-key", [this] { m_search.setText(QStringLiteral("do")); });
        print(name + "rare-text", [this] { m_search.setText(QStringLiteral("documents/cache-7")); });
        print(name + "no-text", [this] { m_search.clear(); });
    }

    void printViews()
    {
        printSearches("search-");
        for (int column = 0; column < workflow::ruleColumnCount; ++column)
            print("sort-" + std::to_string(column), [this, column] { m_window.sortByColumn(column); });
        print("sort-reverse", [this] { m_window.sortByColumn(workflow::ruleColumnCount - 1); });
        const auto path = static_cast<int>(workflow::RuleColumn::path);
        print("sort-path", [this, path] { m_window.sortByColumn(path); });
        printSearches("search-sorted-");
    }

    void printMoves()
    {
        QScrollBar& bar = *m_table.verticalScrollBar();
        print("bar-end", [&] { bar.setValue(bar.maximum()); });
        print("bar-middle", [&] { bar.setValue(bar.maximum() / 2); });
        print("wheel", [this] {
            const QPointF place(10, 10);
            QWheelEvent wheel(place, m_table.viewport()->mapToGlobal(place), {}, {0, -120}, Qt::NoButton,
                Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(m_table.viewport(), &wheel);
        });
        print("resize", [this] { m_window.resize(m_window.width() + 100, m_window.height() + 100); });
        print("select-all", [this] { m_table.selectAll(); });
        print("select-one", [this] { m_table.selectRow(middle()); });
    }

    void printChanges(const std::string& imported)
    {
        print("tag", [this] { m_window.tableViewCellAction(QStringLiteral("mine")); });
        print("second-tag", [this] { m_window.tableViewCellAction(QStringLiteral("other")); });
        print("tag-and-undo", [this] {
            m_window.tableViewCellAction(QStringLiteral("wrong"));
            m_window.undo();
        });
        print("delete", [this] { m_window.deleteRow(static_cast<std::size_t>(middle())); });
        print("undo", [this] { m_window.undo(); });
        print("redo", [this] { m_window.redo(); });
        constexpr qint64 watchersDelay = 3000; // milliseconds
        print(
            "rest", [] {}, watchersDelay); // a change right behind one of ours counts as ours at first
        print(
            "foreign-change", [this] { addAsAnother("one"); }, watchersDelay);
        print("foreign-change-merged", [this] {
            addAsAnother("two");
            m_window.tableViewCellAction(QStringLiteral("merged"));
        });
        print("restore", [this] { m_document.restore(1); });
        print(
            "rest-again", [] {}, watchersDelay);
        std::filesystem::rename(withHalfChanged(), userFile()); // which frees the former file, for 100 ms
        print(
            "foreign-change-of-half", [] {}, watchersDelay);
        print("restore-of-half", [this] { m_document.restore(1); });
        print("review", [&] { m_window.handleFileImport(imported); });
        if (auto* review = m_window.findChild<windows::ImportWindowController*>())
            print("import", [review] { review->importAction(); });
        print("select-all-again", [this] { m_table.selectAll(); });
        print("delete-all", [this] { m_window.deleteRuleAction(); });
        print("undo-delete-all", [this] { m_window.undo(); });
    }

private:
    void addAsAnother(const std::string& name)
    {
        std::ofstream(userFile(), std::ios::app)
            << "allow prefix \"/added/by/another/program/" << name << "\" any r\n";
    }
    // A copy of the user's file in which every other rule has another path.
    std::string withHalfChanged() const
    {
        std::string copy = userFile() + ".changed";
        std::ifstream lines(userFile());
        std::ofstream out(copy);
        bool isChanged = false;
        for (std::string line; std::getline(lines, line); out << line << '\n') {
            isChanged = !isChanged;
            if (isChanged)
                line.replace(line.find("\"/"), 2, "\"/changed/");
        }
        return copy;
    }
    std::string userFile() const { return m_document.store().locations().userRulesFile(); }
    int middle() const { return m_table.model()->rowCount() / 2; }

    workflow::RulesDocument& m_document;
    windows::RulesEditorTableController& m_window;
    windows::RulesTableView& m_table;
    QLineEdit& m_search;
};

// The first hundred thousand rules of `file` for other paths.
void writeImport(const std::string& file, const std::string& imported)
{
    constexpr int importedRules = 100'000;
    std::ifstream lines(file);
    std::ofstream out(imported);
    std::string line;
    for (int rules = 0; rules < importedRules && std::getline(lines, line); ++rules)
        out << line.replace(line.find("\"/"), 2, "\"/imported/") << '\n';
}

void printMemory(const std::string& stage)
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages; // the second figure: what is resident
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%s-resident-megabytes %zu\n", stage.c_str(),
        pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) >> 20U);
    std::printf("%s-peak-megabytes %ld\n", stage.c_str(), usage.ru_maxrss >> 10);
}

void printGaps(const std::string& file, const std::string& folder)
{
    const std::string imported = folder + "/imported.quorv";
    writeImport(file, imported);
    const bench::LongestGap load;
    bench::User user(file, folder);
    std::printf("load %.1f\n", load.whole());
    test::FakeApplication application;
    desktop::Workspace workspace;
    const bench::LongestGap start;
    windows::RulesEditorTableController window(
        user.document(), application, user.run(), workspace, user.log());
    std::printf("start %.1f\n", start.whole());
    Operations operations(user.document(), window);
    operations.print("show", [&window] { window.show(); });
    printMemory("shown");
    operations.printMoves();
    operations.printViews();
    operations.printMoves();
    printMemory("sorted");
    operations.printChanges(imported);
    printMemory("changed");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    return bench::runWindowBench("gap_times", argumentCount, arguments, printGaps);
}
