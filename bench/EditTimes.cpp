#include "bench/WindowBench.h"
#include "desktop/Workspace.h"
#include "tests/support/FakeApplication.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/RulesEditorTableController.h"
#include "windows/RulesTableView.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

// edit_times FILE: the time of one edit of FILE's rules in a window sorted by path, which writes them to a
// copy of FILE and to a journal. One figure per line, in milliseconds: until the new rows are painted;
// "-thread": all work of the user interface thread for it, until the file is written; "-written": until then.
// The reference is a copy of FILE and its sync.

namespace {

using namespace quorvane;

double milliseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double threadMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

class Editing {
public:
    Editing(workflow::RulesDocument& document, workflow::Background& background,
        windows::RulesEditorTableController& window)
        : m_document(document)
        , m_background(background)
        , m_window(window)
        , m_table(*window.findChild<windows::RulesTableView*>())
    {
        m_document.store().sortIndexUsingDescriptors({{rules::SortKey::path, true}});
        m_window.reloadData();
        m_table.selectRow(middle());
        m_table.scrollTo(m_table.currentIndex());
        show();
    }

    void printAll()
    {
        const auto tag
            = [this](const char* text) { m_window.tableViewCellAction(QString::fromLatin1(text)); };
        print("first-tag", [&] { tag("first"); });
        print("tag", [&] { tag("second"); });
        const auto rule = m_document.store().ruleAtIndex(static_cast<std::size_t>(middle()), false);
        if (const auto* policy = std::get_if<rules::PolicyRulePtr>(&rule)) {
            m_window.editPolicy(*policy);
            auto* editor = m_window.findChild<windows::EditPolicyWindowController*>();
            print("save", [&] { editor->saveClicked(); });
        }
        print("delete", [&] { m_window.deleteRow(static_cast<std::size_t>(middle())); });
        print("undo", [&] { m_document.undo(); });
        const auto search = [this](const char* text) {
            m_document.store().applyFilterWithString(text);
            m_window.reloadData();
        };
        print("first-search-key", [&] { search("d"); });
        print("other-search-key", [&] { search("o"); });
    }

private:
    int middle() const { return m_table.model()->rowCount() / 2; }

    void show()
    {
        QApplication::processEvents();
        m_table.viewport()->repaint();
    }

    void print(const char* name, const std::function<void()>& command)
    {
        m_background.wait(); // the window's initial search of the file
        QElapsedTimer timer;
        timer.start();
        const double before = threadMilliseconds();
        command();
        show();
        std::printf("%s %.2f\n", name, milliseconds(timer));
        m_document.waitUntilWritten();
        QApplication::processEvents();
        std::printf("%s-thread %.2f\n", name, threadMilliseconds() - before);
        std::printf("%s-written %.2f\n", name, milliseconds(timer));
    }

    workflow::RulesDocument& m_document;
    workflow::Background& m_background;
    windows::RulesEditorTableController& m_window;
    windows::RulesTableView& m_table;
};

// The best of several runs, since other load only adds time.
double best(const std::function<void()>& work)
{
    constexpr int runs = 3;
    double least = 0;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        least = run == 0 ? milliseconds(timer) : std::min(least, milliseconds(timer));
    }
    return least;
}

void printTimes(const std::string& file, const std::string& folder)
{
    bench::User user(file, folder);
    test::FakeApplication application;
    desktop::Workspace workspace;
    windows::RulesEditorTableController window(
        user.document(), application, user.run(), workspace, user.log());
    window.show();
    Editing(user.document(), user.background(), window).printAll();
    const std::string written = folder + "/written";
    std::printf("write-file %.2f\n", best([&] { user.store().writeToFile(written); }));
    const std::string copy = folder + "/copy";
    std::printf("copy-and-sync %.2f\n", best([&] {
        if (std::system(("cp '" + file + "' '" + copy + "' && sync '" + copy + "'").c_str()) != 0)
            std::fputs("cp failed\n", stderr);
    }));
}

} // namespace

int main(int argumentCount, char** arguments)
{
    return bench::runWindowBench("edit_times", argumentCount, arguments, printTimes);
}
